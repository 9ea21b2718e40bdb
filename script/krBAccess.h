// Nodes that name storage: variables, the current value `$_`, members and indexes.
#pragma once

#include "script/krBlock.h"
#include "script/krScript.h"

// `$name`: the top frame first, then the script's fields. Slots are resolved once per node and
// checked against the frame that is actually on top, so code run in another function's frame
// (a macro, an included file) still finds its variables by name.
class krBVar : public krBlock {
public:
    enum class Scope : uint8_t { any, fields, frame };
    krBVar(krBlock* parent, std::string name, Scope scope = Scope::any);
    krVariant* eval() override;
    void assign(krVariant* value) override;
    void adoptCopy(krVariant* copy) override { assign(copy); }
    const std::string& getName() const { return name; }

protected:
    // The slot of this name in the top frame, found once by layout; there must be a frame.
    int32_t frameSlot() {
        if (layoutResolved && script->topLayout() == layout) return localSlot;
        return findFrameSlot();
    }
    int32_t findFrameSlot();
    int32_t fieldSlot() {
        if (fieldIndex < 0) fieldIndex = script->fieldSlot(name);
        return fieldIndex;
    }

    std::string name;
    Scope scope;
    krFrameLayout* layout = nullptr;
    bool layoutResolved = false;
    int32_t localSlot = -1;
    int32_t fieldIndex = -1;
};

// `global $name`: fields only.
class krBVarGlobal : public krBVar {
public:
    krBVarGlobal(krBlock* parent, std::string name) : krBVar(parent, std::move(name), Scope::fields) {}
};

// `local $name`: the top frame only.
class krBVarLocal : public krBVar {
public:
    krBVarLocal(krBlock* parent, std::string name) : krBVar(parent, std::move(name), Scope::frame) {}
};

// `$_`: the top of the current-value stack.
class krBCurrent : public krBlock {
public:
    explicit krBCurrent(krBlock* parent) : krBlock(parent) {}
    krVariant* eval() override;
    void assign(krVariant* value) override;
};

// Evaluated argument lists: null results are dropped, every value is released afterwards.
class krArgValues {
public:
    krArgValues(const std::vector<krBlock*>& blocks);
    ~krArgValues();
    const krArgs& values() const { return list; }

private:
    krArgs list;
};

// `.name` or `.name(args)` on the current value.
class krBCurrentKey : public krBlock {
public:
    krBCurrentKey(krBlock* parent, std::string name) : krBlock(parent), name(std::move(name)) {}
    ~krBCurrentKey() override;
    krVariant* eval() override;
    void assign(krVariant* value) override;
    virtual void addArg(krBlock* arg) { args.push_back(arg); }

private:
    std::string name;
    std::vector<krBlock*> args;
};

// `left.name` or `left.name(args)`.
class krBKey : public krBlock {
public:
    krBKey(krBlock* parent, std::string name) : krBlock(parent), name(std::move(name)) {}
    ~krBKey() override;
    krVariant* eval() override;
    void assign(krVariant* value) override;
    bool isConst() override;
    virtual void setLeft(krBlock* l) { left = l; }
    virtual void addArg(krBlock* arg) { args.push_back(arg); }

private:
    std::string name;
    krBlock* left = nullptr;
    std::vector<krBlock*> args;
};

// `left[index]`; an empty index on the left of `=` appends.
class krBIndex : public krBlock {
public:
    explicit krBIndex(krBlock* parent) : krBlock(parent) {}
    ~krBIndex() override;
    krVariant* eval() override;
    void assign(krVariant* value) override;
    bool isConst() override;
    virtual void setIndex(krBlock* i) { index = i; }
    virtual void setLeft(krBlock* l) { left = l; }

private:
    krBlock* index = nullptr;
    krBlock* left = nullptr;
};
