// Bound values: script values that read and write a field of an engine object, so that `+=` and
// assignment on a property act on the field itself. A clone is always a plain, detached value.
// With a null pointer they read as the empty value and ignore writes. A value bound to a field
// of a script object names that object too, and falls back to null once the object is gone, so
// a script that keeps the value longer than the object cannot reach freed memory.
#pragma once

#include "script/krVariant.h"

// The field pointer together with the liveness of the object that holds it.
template <typename Field>
class krFieldRef {
public:
    krFieldRef(Field* f, krScriptObject* holder) : field(f), holderHandle(holder ? holder->handle() : 0) {}
    Field* get() const {
        if (holderHandle && !krScriptObject::fromHandle(holderHandle)) return nullptr;
        return field;
    }
    void forget() { field = nullptr; }

private:
    Field* field;
    int32_t holderHandle;
};

// Integer fields of 32, 16 and 8 bits share one form.
template <typename Field>
class krVIntField : public krVariant {
public:
    explicit krVIntField(Field* f, krScriptObject* holder = nullptr) : krVariant(krTypeInt), field(f, holder) {}
    krVariant* clone() override { return new krVInt(toInt()); }
    void reset() override { field.forget(); }
    bool toBool() override { return toInt() != 0; }
    int32_t toInt() override {
        Field* f = field.get();
        return f ? static_cast<int32_t>(*f) : 0;
    }
    float toFloat() override { return static_cast<float>(toInt()); }
    std::string toString() override { return std::to_string(toInt()); }
    std::string toLiteral() override { return field.get() ? toString() : "0"; }
    void setInt(int32_t v) override {
        Field* f = field.get();
        if (f && !isFrozen()) *f = static_cast<Field>(v);
    }
    void assign(krVariant* v) override { setInt(v->toInt()); }
    bool isConst() override { return false; }

private:
    krFieldRef<Field> field;
};

using krVIntPtr = krVIntField<int32_t>;
using krVShortPtr = krVIntField<int16_t>;
using krVCharPtr = krVIntField<int8_t>;

class krVFloatPtr : public krVariant {
public:
    explicit krVFloatPtr(float* f, krScriptObject* holder = nullptr) : krVariant(krTypeFloat), field(f, holder) {}
    krVariant* clone() override { return new krVFloat(toFloat()); }
    void reset() override { field.forget(); }
    bool toBool() override { return toFloat() != 0; }
    int32_t toInt() override { return krConvert::floatToInt(toFloat()); }
    float toFloat() override {
        float* f = field.get();
        return f ? *f : 0.0f;
    }
    std::string toString() override { return krConvert::floatToString(toFloat()); }
    std::string toLiteral() override { return field.get() ? toString() : "0"; }
    void setFloat(float v) override {
        float* f = field.get();
        if (f && !isFrozen()) *f = v;
    }
    void assign(krVariant* v) override { setFloat(v->toFloat()); }
    bool isConst() override { return false; }

private:
    krFieldRef<float> field;
};

class krVStringPtr : public krVariant {
public:
    explicit krVStringPtr(std::string* f, krScriptObject* holder = nullptr) : krVariant(krTypeString), field(f, holder) {}
    krVariant* clone() override { return new krVString(toString()); }
    void reset() override { field.forget(); }
    bool toBool() override { return krConvert::stringToBool(toString()); }
    int32_t toInt() override { return krConvert::stringToInt(toString()); }
    float toFloat() override { return krConvert::stringToFloat(toString()); }
    std::string toString() override {
        std::string* f = field.get();
        return f ? *f : std::string();
    }
    std::string toLiteral() override { return field.get() ? krConvert::quoted(toString()) : "0"; }
    void setString(const std::string& v) override {
        std::string* f = field.get();
        if (f && !isFrozen()) *f = v;
    }
    void assign(krVariant* v) override { setString(v->toString()); }
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    bool isConst() override { return false; }

private:
    krFieldRef<std::string> field;
};
