// Control-flow nodes: conditions, loops, `with`, and the statements that set the unwinding status.
#pragma once

#include "script/krBlock.h"

class krBIf : public krMultiBlock {
public:
    explicit krBIf(krBlock* parent) : krMultiBlock(parent) {}
    ~krBIf() override;
    krVariant* eval() override;
    void setCond(krBlock* c) { cond = c; }
    void setOtherwise(krBlock* o) { otherwise = o; }

private:
    krBlock* cond = nullptr;
    krBlock* otherwise = nullptr;
};

class krBWhile : public krMultiBlock {
public:
    explicit krBWhile(krBlock* parent) : krMultiBlock(parent) {}
    ~krBWhile() override;
    krVariant* eval() override;
    void setCond(krBlock* c) { cond = c; }

private:
    krBlock* cond = nullptr;
};

class krBFor : public krMultiBlock {
public:
    explicit krBFor(krBlock* parent) : krMultiBlock(parent) {}
    ~krBFor() override;
    krVariant* eval() override;
    void setInit(krBlock* b) { init = b; }
    void setCond(krBlock* b) { cond = b; }
    void setNext(krBlock* b) { next = b; }

private:
    krBlock* init = nullptr;
    krBlock* cond = nullptr;
    krBlock* next = nullptr;
};

class krBForeach : public krMultiBlock {
public:
    explicit krBForeach(krBlock* parent) : krMultiBlock(parent) {}
    ~krBForeach() override;
    krVariant* eval() override;
    void setExpr(krBlock* e) { expr = e; }

private:
    krBlock* expr = nullptr;
};

class krBWith : public krMultiBlock {
public:
    explicit krBWith(krBlock* parent) : krMultiBlock(parent) {}
    ~krBWith() override;
    krVariant* eval() override;
    virtual void setExpr(krBlock* e) { expr = e; }

private:
    krBlock* expr = nullptr;
};

// `return` and `exit`: the value, if any, and the status that unwinds to the function or the file.
class krBReturn : public krBlock {
public:
    explicit krBReturn(krBlock* parent, krStatus s = krStatusReturn) : krBlock(parent), status(s) {}
    ~krBReturn() override;
    krVariant* eval() override;
    virtual void setValue(krBlock* v) { value = v; }

private:
    krBlock* value = nullptr;
    krStatus status;
};

class krBExit : public krBReturn {
public:
    explicit krBExit(krBlock* parent) : krBReturn(parent, krStatusExit) {}
};

class krBContinue : public krBlock {
public:
    explicit krBContinue(krBlock* parent) : krBlock(parent) {}
    krVariant* eval() override;
};

class krBBreak : public krBlock {
public:
    explicit krBBreak(krBlock* parent) : krBlock(parent) {}
    krVariant* eval() override;
};
