// Helpers for the `new_*` functions: the optional owner argument and the make-attach-return step
// that every factory shares. Subsystems register their factories with krSymbols::addFunction.
#pragma once

#include "core/krModule.h"
#include "script/krBFuncCall.h"

namespace krFactory {
    // The owner named by args[index]: krMain when the argument is absent, no owner for 0, and
    // false (after a report at `caller`) for a value that names no live module.
    bool owner(krBlock* caller, const krArgs& args, size_t index, krModule*& out);
    // Attaches a new module and gives the script an object value of it.
    krVariant* attachAndReturn(krModule* module);
}

// A factory for module classes whose constructor takes the owner alone.
template <class T>
krVariant* krMakeModule(krBlock* caller, const krArgs& args) {
    krModule* owner;
    if (!krFactory::owner(caller, args, 0, owner)) return nullptr;
    return krFactory::attachAndReturn(new T(owner));
}
