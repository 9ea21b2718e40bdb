// krKeysetObject: key bindings and tuning values read from a key set, a small script file that
// only assigns variables. A class mixes it in, calls loadKeys with a path, and reads what it
// needs in its applyKeys through getBool, getFloat and getKey.
#pragma once

#include <cstdint>
#include <string>

class krScript;

class krKeysetObject {
public:
    krKeysetObject() = default;
    krKeysetObject(const krKeysetObject&) = delete;
    krKeysetObject& operator=(const krKeysetObject&) = delete;
    virtual ~krKeysetObject();

    // Reads the deriving class's bindings from the key set now; later changes to the file count
    // only at the next call.
    void loadKeys(const std::string& path);

protected:
    // Runs inside loadKeys while the key set is loaded; the getters answer only then.
    virtual void applyKeys() = 0;

    bool getBool(const std::string& name, bool fallback) const;
    float getFloat(const std::string& name, float fallback) const;
    // A key name through keyCode; an unknown name, "Undefined" included, gives the fallback.
    int32_t getKey(const std::string& name, int32_t fallback) const;

private:
    krScript* keys = nullptr;
};
