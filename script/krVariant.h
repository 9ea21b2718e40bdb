// krVariant: the values of the script language. Reference counted, one small class per kind,
// each converting itself to the others by its own overrides; the bound kinds write through to a
// field of an engine object. Values come from a pool, since every property read and every arithmetic result
// makes one.
#pragma once

#include <cstdint>
#include <string>

#include "core/krScriptObject.h"
#include "script/krPool.h"

class krBlock;
struct krClassInfo;
struct krIterState;

// How a value keeps its content: the plain classes below hold it in a field that the interpreter
// reads directly on its fast paths; everything else (bound values, objects, arrays, macros)
// answers only through the virtual conversions.
enum class krStorage : uint8_t { other, boolean, integer, real, text };

enum krType : uint8_t {
    krTypeNone = 0,
    krTypeBool = 1,
    krTypeInt = 2,
    krTypeFloat = 3,
    krTypeString = 4,
    krTypeObject = 5,
    krTypeArray = 6,
    krTypeScript = 7,
    krTypeMacro = 8,
};

class krVariant {
public:
    static void* operator new(std::size_t size) { return krPool::allocate(size); }
    static void operator delete(void* p, std::size_t size) { krPool::free(p, size); }

    krVariant(const krVariant&) = delete;
    krVariant& operator=(const krVariant&) = delete;
    virtual ~krVariant() { --instanceCount; }

    krVariant* addRef() { ++refCount; return this; }
    void release() {
        if (--refCount < 1) delete this;
    }
    int32_t getRefCount() const { return refCount; }

    // The assignment rule: a value held only by its present holder is adopted (count 2, which the
    // holder's later release brings to 1); a value with other holders is cloned. A frozen value is
    // always cloned, so nobody can come to own a constant.
    krVariant* share() {
        if (refCount == 1 && !frozen) {
            refCount = 2;
            return this;
        }
        return clone();
    }

    int type() const { return kind; }
    krStorage storage() const { return store; }

    // Constants of the block tree and of the constant table are frozen: nothing a script does can
    // change them. Operators that would change one in place work on a copy instead.
    bool isFrozen() const { return frozen; }
    virtual void freeze() { frozen = true; }

    virtual krVariant* clone() { return nullptr; }
    virtual void reset() {}
    virtual bool toBool() { return false; }
    virtual int32_t toInt() { return 0; }
    virtual float toFloat() { return 0; }
    virtual std::string toString() { return std::string(); }
    virtual std::string toLiteral() { return "0"; }
    virtual void setBool(bool) {}
    virtual void setInt(int32_t) {}
    virtual void setFloat(float) {}
    virtual void setString(const std::string&) {}
    // Appends to the text of a string value (the in-place `+=`).
    virtual void appendString(const std::string& tail) { setString(toString() + tail); }
    // The length of the text form, without copying it where the value holds text itself.
    virtual size_t textLength() { return toString().size(); }
    // Copies a value of any kind into this one, converting.
    virtual void assign(krVariant*) {}

    // Iteration over the elements of a collection. iterNext returns the next element with a
    // reference for the caller; at the end it frees the state, nulls it and returns null.
    // iterFree ends an iteration early.
    virtual krIterState* iterBegin() { return nullptr; }
    virtual int32_t count() { return 0; }
    virtual krVariant* iterNext(krIterState*& state);
    static void iterFree(krIterState*& state);

    virtual krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args);
    virtual void setMember(const std::string&, krVariant*) {}
    virtual krVariant* getIndex(const std::string&) { return nullptr; }
    virtual void setIndex(const std::string&, krVariant*) {}
    // True when the parser may fold the value into the tree.
    virtual bool isConst() { return true; }

    // Live values in the process, read by scripts as KRSCRIPT_VARIANTCOUNT.
    static int32_t instanceCount;
    // A host running untrusted text may bound the live values: past the limit, copies of arrays
    // stop and running script code unwinds. Unbounded unless set.
    static int32_t instanceLimit;
    static bool overLimit() { return instanceCount > instanceLimit; }

protected:
    explicit krVariant(krType t, krStorage s = krStorage::other) : kind(t), store(s) { ++instanceCount; }

private:
    int32_t refCount = 1;
    krType kind;
    krStorage store;
    bool frozen = false;
};

class krVBool : public krVariant {
public:
    bool& raw() { return value; }
    explicit krVBool(bool v) : krVariant(krTypeBool, krStorage::boolean), value(v) {}
    krVariant* clone() override { return new krVBool(value); }
    void reset() override { setBool(false); }
    bool toBool() override { return value; }
    int32_t toInt() override { return value ? 1 : 0; }
    float toFloat() override { return value ? 1.0f : 0.0f; }
    std::string toString() override { return value ? "true" : "false"; }
    std::string toLiteral() override { return toString(); }
    void setBool(bool v) override {
        if (!isFrozen()) value = v;
    }
    void assign(krVariant* v) override { setBool(v->toBool()); }

private:
    bool value;
};

class krVInt : public krVariant {
public:
    int32_t& raw() { return value; }
    explicit krVInt(int32_t v) : krVariant(krTypeInt, krStorage::integer), value(v) {}
    krVariant* clone() override { return new krVInt(value); }
    void reset() override { setInt(0); }
    bool toBool() override { return value != 0; }
    int32_t toInt() override { return value; }
    float toFloat() override { return static_cast<float>(value); }
    std::string toString() override { return std::to_string(value); }
    std::string toLiteral() override { return toString(); }
    void setInt(int32_t v) override {
        if (!isFrozen()) value = v;
    }
    void assign(krVariant* v) override { setInt(v->toInt()); }

private:
    int32_t value;
};

class krVFloat : public krVariant {
public:
    float& raw() { return value; }
    explicit krVFloat(float v) : krVariant(krTypeFloat, krStorage::real), value(v) {}
    krVariant* clone() override { return new krVFloat(value); }
    void reset() override { setFloat(0); }
    bool toBool() override { return value != 0; }
    int32_t toInt() override;
    float toFloat() override { return value; }
    std::string toString() override;
    std::string toLiteral() override { return toString(); }
    void setFloat(float v) override {
        if (!isFrozen()) value = v;
    }
    void assign(krVariant* v) override { setFloat(v->toFloat()); }

private:
    float value;
};

namespace krConvert {
    // The text between two '"' characters, nothing escaped.
    std::string quoted(const std::string& text);
}

class krVString : public krVariant {
public:
    explicit krVString(std::string v) : krVariant(krTypeString, krStorage::text), value(std::move(v)) {}
    static const krClassInfo info;
    krVariant* clone() override { return new krVString(value); }
    void reset() override { setString(std::string()); }
    bool toBool() override;
    int32_t toInt() override;
    float toFloat() override;
    std::string toString() override { return value; }
    std::string toLiteral() override { return krConvert::quoted(value); }
    void setString(const std::string& v) override {
        if (!isFrozen()) value = v;
    }
    void assign(krVariant* v) override;
    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;

    void appendString(const std::string& tail) override {
        if (!isFrozen()) value += tail;
    }
    size_t textLength() override { return value.size(); }
    const std::string& text() const { return value; }
    std::string& raw() { return value; }

private:
    std::string value;
};

// The conversions of text, shared by strings and the string-bound value.
namespace krConvert {
    bool stringToBool(const std::string& s);
    int32_t stringToInt(const std::string& s);
    float stringToFloat(const std::string& s);
    // About three significant digits, ties rounded away from zero; 0 gives "0.000000".
    std::string floatToString(float f);
    // Float to int truncating toward zero, without undefined behaviour out of range or on NaN.
    int32_t floatToInt(float f);
    // The longest text a script can build; joining beyond it is refused with a report, since a
    // script doubling a string in a loop would otherwise take all memory.
    constexpr size_t maxStringBytes = size_t(64) << 20;
    // The members of text values (`length`, `empty`, `clear`), for strings and bound strings.
    krVariant* stringMember(krVariant* self, const std::string& text, const std::string& name, const krArgs& args);
}

// Copies the content of a plain value into a plain value of the same storage, the store rule's
// common case, without a virtual call; false when either is not plain, they differ, or the target
// is frozen.
inline bool krCopyPlain(krVariant* target, krVariant* source) {
    const krStorage kind = target->storage();
    if (kind != source->storage() || kind == krStorage::other || target->isFrozen()) return false;
    switch (kind) {
    case krStorage::integer: static_cast<krVInt*>(target)->raw() = static_cast<krVInt*>(source)->raw(); break;
    case krStorage::real: static_cast<krVFloat*>(target)->raw() = static_cast<krVFloat*>(source)->raw(); break;
    case krStorage::boolean: static_cast<krVBool*>(target)->raw() = static_cast<krVBool*>(source)->raw(); break;
    default:
        if (target != source) static_cast<krVString*>(target)->raw() = static_cast<krVString*>(source)->raw();
        break;
    }
    return true;
}

// The truth of a value, with the plain kinds read directly.
inline bool krTruth(krVariant* v) {
    switch (v->storage()) {
    case krStorage::boolean: return static_cast<krVBool*>(v)->raw();
    case krStorage::integer: return static_cast<krVInt*>(v)->raw() != 0;
    default: return v->toBool();
    }
}
