// Values that refer to things living elsewhere: engine objects and loaded scripts through their
// handles (a stale handle reads as null), and macros, which evaluate their expression at each read.
#pragma once

#include "script/krVariant.h"

class krScript;

class krVObject : public krVariant {
public:
    explicit krVObject(krScriptObject* object) : krVariant(krTypeObject), handle(object ? object->handle() : 0) {}
    static krVObject* fromHandle(int32_t h);

    krScriptObject* object() const { return krScriptObject::fromHandle(handle); }

    krVariant* clone() override { return fromHandle(handle); }
    void reset() override { setHandle(0); }
    bool toBool() override { return object() != nullptr; }
    int32_t toInt() override { return object() ? handle : 0; }
    float toFloat() override { return 0; }
    std::string toString() override;
    std::string toLiteral() override;
    void assign(krVariant* v) override { setHandle(v->toInt()); }
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool isConst() override { return false; }

private:
    krVObject() : krVariant(krTypeObject) {}
    void setHandle(int32_t h) {
        if (!isFrozen()) handle = h;
    }
    int32_t handle = 0;
};

class krVScript : public krVariant {
public:
    explicit krVScript(krScript* script);
    static krVScript* fromHandle(int32_t h);

    krScript* script() const;

    krVariant* clone() override { return fromHandle(handle); }
    void reset() override { setHandle(0); }
    bool toBool() override { return script() != nullptr; }
    int32_t toInt() override { return script() ? handle : 0; }
    float toFloat() override { return 0; }
    std::string toString() override;
    std::string toLiteral() override;
    void assign(krVariant* v) override { setHandle(v->toInt()); }
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool isConst() override { return false; }

private:
    krVScript() : krVariant(krTypeScript) {}
    void setHandle(int32_t h) {
        if (!isFrozen()) handle = h;
    }
    int32_t handle = 0;
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
