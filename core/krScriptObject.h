// krScriptObject: base of everything a script can address by name.
// Members are found by a ladder of name comparisons, each class then its base;
// an unknown name ends as an event of that name, so scripts can give objects methods.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class krVariant;
class krBlock;
class krFunction;
struct krClassInfo;

// Arguments of a member call or event: borrowed values, never null.
using krArgs = std::vector<krVariant*>;

class krScriptObject {
public:
    krScriptObject() = default;
    krScriptObject(const krScriptObject&) = delete;
    krScriptObject& operator=(const krScriptObject&) = delete;
    virtual ~krScriptObject();

    static const krClassInfo info;

    krScriptObject* addRef() { ++refCount; return this; }
    // Drops one reference; destroys the object at 0 and then returns true.
    bool release();
    int32_t getRefCount() const { return refCount; }

    // Returns a value the caller owns one reference of, or null.
    virtual krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args);
    virtual void setMember(const std::string& name, krVariant* value);
    virtual void addEvent(const std::string& name, krFunction* handler);
    virtual void removeEvent(const std::string& name, krFunction* handler);
    // Runs every handler bound to `name` in binding order; returns the last result, owned by the caller.
    virtual krVariant* fireEvent(const std::string& name, const krArgs& args);

    // Most derived class name, as scripts read it through `class`.
    virtual const char* className() const { return "krScriptObject"; }

    bool hasEvents() const { return !events.empty(); }
    bool hasEvent(const std::string& name) const { return events.count(name) > 0; }

    // The 32-bit handle that stands for this object in script ints; made on first use.
    int32_t handle();
    // The live object behind a handle, or null when it is gone or was never an object.
    static krScriptObject* fromHandle(int32_t handle);

    // The empty argument list that engine code passes to events without arguments.
    static const krArgs noArgs;

private:
    std::multimap<std::string, krFunction*> events;
    int32_t refCount = 1;
    int32_t handleId = 0;
};
