// Values that refer to things living elsewhere: engine objects and loaded scripts through their
// handles (a stale handle reads as null), and macros, which evaluate their expression at each read.
#pragma once

#include "script/krVariant.h"

class krScript;

// What object and script values share: a handle that turns into null once its thing is gone.
class krVHandle : public krVariant {
public:
    bool toBool() override { return target() != nullptr; }
    int32_t toInt() override { return target() ? handle : 0; }
    float toFloat() override { return 0; }
    void reset() override { setHandle(0); }
    void assign(krVariant* v) override { setHandle(v->toInt()); }
    bool isConst() override { return false; }

protected:
    krVHandle(krType t, int32_t h) : krVariant(t), handle(h) {}
    // The live thing behind the handle, or null.
    virtual void* target() const = 0;
    void setHandle(int32_t h) {
        if (!isFrozen()) handle = h;
    }
    int32_t handle;
};

class krVObject : public krVHandle {
public:
    explicit krVObject(krScriptObject* object) : krVHandle(krTypeObject, object ? object->handle() : 0) {}
    static krVObject* fromHandle(int32_t h);

    krScriptObject* object() const { return krScriptObject::fromHandle(handle); }

    krVariant* clone() override { return fromHandle(handle); }
    std::string toString() override;
    std::string toLiteral() override;
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;

protected:
    void* target() const override { return object(); }
};

class krVScript : public krVHandle {
public:
    explicit krVScript(krScript* script);
    static const krClassInfo info;
    static krVScript* fromHandle(int32_t h);

    krScript* script() const;

    krVariant* clone() override { return fromHandle(handle); }
    std::string toString() override;
    std::string toLiteral() override;
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;

protected:
    void* target() const override { return script(); }
};

class krVMacro : public krVariant {
public:
    // Takes ownership of the parsed expression.
    explicit krVMacro(krBlock* expression) : krVariant(krTypeMacro), expr(expression) {}
    ~krVMacro() override;

    // Macros are shared, never copied.
    krVariant* clone() override { return addRef(); }
    void reset() override;
    bool toBool() override;
    int32_t toInt() override;
    float toFloat() override;
    std::string toString() override;
    std::string toLiteral() override;
    bool isConst() override { return false; }

private:
    // The expression's value, owned by the caller, or null.
    krVariant* evaluate();
    krBlock* expr;
};
