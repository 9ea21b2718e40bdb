// Key sets: load, run, read, forget.
#include "interface/krKeysetObject.h"

#include "core/krFile.h"
#include "core/krModule.h"
#include "interface/krInputKeys.h"
#include "script/krScript.h"
#include "script/krScripting.h"

namespace {
// A variable of the loading key set, with a reference for the caller, or null.
krVariant* lookUp(krScript* keys, const std::string& name) {
    return keys ? keys->getField(name) : nullptr;
}
}

krKeysetObject::~krKeysetObject() {
    delete keys;
}

void krKeysetObject::loadKeys(const std::string& path) {
    // A key set that loads a key set for the same object would find this one's script gone.
    if (keys) return;
    // The key set is a script: it may delete the object it configures, which stays in memory
    // until the keys are read.
    krModuleHold hold{dynamic_cast<krModule*>(this)};
    keys = new krScript();
    keys->setHost(krScripting::instance());
    keys->setFile(path);
    {
        krFile file(path, true);
        keys->load(file.data);
    }
    if (krVariant* result = keys->eval()) result->release();
    applyKeys();
    delete keys;
    keys = nullptr;
}

bool krKeysetObject::getBool(const std::string& name, bool fallback) const {
    krVariant* v = lookUp(keys, name);
    if (!v) return fallback;
    const bool result = v->toBool();
    v->release();
    return result;
}

float krKeysetObject::getFloat(const std::string& name, float fallback) const {
    krVariant* v = lookUp(keys, name);
    if (!v) return fallback;
    const float result = v->toFloat();
    v->release();
    return result;
}

int32_t krKeysetObject::getKey(const std::string& name, int32_t fallback) const {
    krVariant* v = lookUp(keys, name);
    if (!v) return fallback;
    const int32_t code = keyCode(v->toString());
    v->release();
    return code ? code : fallback;
}
