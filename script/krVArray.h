// krVArray: ordered map from string key to value. Keys compare byte by byte, so "10" comes before
// "2". Iterations in progress survive removals and clears of the array they walk.
#pragma once

#include <map>
#include <vector>

#include "script/krVariant.h"

class krVArray : public krVariant {
public:
    using Items = std::map<std::string, krVariant*>;

    krVArray() : krVariant(krTypeArray) {}
    static const krClassInfo info;
    ~krVArray() override;

    krVariant* clone() override;
    void reset() override;
    bool toBool() override { return !items.empty(); }
    int32_t toInt() override { return static_cast<int32_t>(items.size()); }
    float toFloat() override { return static_cast<float>(items.size()); }
    std::string toString() override;
    std::string toLiteral() override;
    void assign(krVariant* v) override;
    void freeze() override;

    krIterState* iterBegin() override;
    int32_t count() override { return static_cast<int32_t>(items.size()); }
    krVariant* iterNext(krIterState*& state) override;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    krVariant* getIndex(const std::string& key) override;
    void setIndex(const std::string& key, krVariant* value) override;
    bool isConst() override;

    // Stores `value` under `key`, taking over the reference the caller gives.
    void put(const std::string& key, krVariant* value);
    // Appends under the decimal form of the count, taking over the reference.
    void append(krVariant* value) { put(std::to_string(items.size()), value); }
    const Items& elements() const { return items; }

    // Forgets an iteration state that ends; called by the state itself.
    void detach(krIterState* state);

protected:
    // Whether setIndex may change a frozen array (the shared global array may).
    virtual bool indexWritable() { return !isFrozen(); }
    void copyFrom(krVArray* source);

private:
    void erase(Items::iterator it);
    bool matches(krVariant* element, krVariant* probe);

    Items items;
    // Iterations in progress over this array, moved on when their element is erased.
    std::vector<krIterState*> iterations;
};

// The array of the shared global data: never folded by the parser, so every user sees the one
// instance, and its elements may be changed through indexing even though it is a constant.
class krVMutableArray : public krVArray {
public:
    bool isConst() override { return false; }
    // Only the array itself is the constant: its elements belong to the scripts that store them
    // and stay writable, however often a script that names the array is parsed.
    void freeze() override { krVariant::freeze(); }

protected:
    bool indexWritable() override { return true; }
};

struct krIterState {
    static void* operator new(std::size_t size) { return krPool::allocate(size); }
    static void operator delete(void* p, std::size_t size) { krPool::free(p, size); }
    krVArray* array;
    krVArray::Items::iterator position;
};
