// Factory helpers.
#include "script/krFactory.h"

#include "core/krMain.h"
#include "script/krVObject.h"

bool krFactory::owner(krBlock* caller, const krArgs& args, size_t index, krModule*& out) {
    out = krMain::instance();
    if (args.size() <= index) return true;
    const int32_t h = args[index]->toInt();
    if (h == 0) {
        out = nullptr;
        return true;
    }
    out = dynamic_cast<krModule*>(krScriptObject::fromHandle(h));
    if (out) return true;
    reportError(caller, "Owner is not a module");
    return false;
}

krVariant* krFactory::attachAndReturn(krModule* module) {
    module->attach();
    // Made without an owner: kept apart until it gets one or the engine ends.
    if (!module->getOwner()) krModule::adoptOrphan(module);
    return new krVObject(module);
}
