// Calls and event bindings: calls of script functions by name, of engine functions through the
// function table, and the `event` statements that bind handlers when they run.
#pragma once

#include "script/krBlock.h"

class krFunction;

// An engine function: the calling node (for reports and context) and the non-null argument values.
using krNativeFunction = krVariant* (*)(krBlock* caller, const krArgs& args);
// The raw form: every argument, called only when none is null.
using krExternalFunction = krVariant* (*)(int count, krVariant** args);

class krBFuncCall : public krBlock {
public:
    krBFuncCall(krBlock* parent, bool foldable) : krBlock(parent), foldable(foldable) {}
    ~krBFuncCall() override;
    bool isConst() override;
    virtual void addArg(krBlock* arg) { args.push_back(arg); }

protected:
    std::vector<krBlock*> args;
    bool foldable;
};

// A script function by name, looked up in the calling script when the call runs.
class krBFuncCallStr : public krBFuncCall {
public:
    krBFuncCallStr(krBlock* parent, std::string name) : krBFuncCall(parent, false), name(std::move(name)) {}
    krVariant* eval() override;

private:
    std::string name;
    // The function found at the last call, valid while the script's function table is unchanged.
    krFunction* cached = nullptr;
    uint32_t cachedVersion = 0;
};

class krBFuncCallPtr : public krBFuncCall {
public:
    krBFuncCallPtr(krBlock* parent, krNativeFunction f, bool foldable) : krBFuncCall(parent, foldable), function(f) {}
    krVariant* eval() override;

private:
    krNativeFunction function;
};

class krBFuncCallExternal : public krBFuncCall {
public:
    krBFuncCallExternal(krBlock* parent, krExternalFunction f, bool foldable) : krBFuncCall(parent, foldable), function(f) {}
    krVariant* eval() override;

private:
    krExternalFunction function;
};

// `event object: name params body`: binds the handler to the object when the statement runs.
class krBEventInit : public krBlock {
public:
    explicit krBEventInit(krBlock* parent) : krBlock(parent) {}
    ~krBEventInit() override;
    krVariant* eval() override;
    virtual void setName(const std::string& n) { name = n; }
    virtual void setObject(krBlock* o) { object = o; }
    virtual void setHandler(krFunction* h) { handler = h; }

private:
    std::string name;
    krFunction* handler = nullptr;
    krBlock* object = nullptr;
};

// `event object: { nameExpr } params body`: the event name is computed when the statement runs.
class krBDynEventInit : public krBlock {
public:
    explicit krBDynEventInit(krBlock* parent) : krBlock(parent) {}
    ~krBDynEventInit() override;
    krVariant* eval() override;
    virtual void setNameExpr(krBlock* e) { nameExpr = e; }
    virtual void setObject(krBlock* o) { object = o; }
    virtual void setHandler(krFunction* h) { handler = h; }

private:
    krBlock* nameExpr = nullptr;
    krFunction* handler = nullptr;
    krBlock* object = nullptr;
};
