// Function calls: frames filled by parameter position, the body, and the unwinding at the end.
#include "script/krFunction.h"

#include "platform/krSystem.h"
#include "script/krScript.h"

int32_t krFrameLayout::slot(const std::string& name, bool add) {
    auto it = index.find(name);
    if (it != index.end()) return it->second;
    if (!add) return -1;
    const auto slot = static_cast<int32_t>(names.size());
    names.push_back(name);
    index.emplace(name, slot);
    return slot;
}

void krFunction::addParam(const std::string& name) {
    params.push_back(name);
    paramSlots.push_back(layout.slot(name, true));
}

krVariant* krFunction::call(const std::vector<krBlock*>* blocks, const krArgs* values) {
    if (orphaned || !script) return nullptr;
    if (krSystem::stackLow()) return reportError(this, "Recursion too deep");
    if (!krScript::spendStep()) {
        script->setStatus(krStatusExit);
        return nullptr;
    }
    krScript* s = script;
    hold();
    s->enter();

    // Arguments are evaluated in the caller's frame, before the new frame exists; arguments
    // beyond the parameters are not evaluated at all, and a null value stops the filling.
    const size_t n = params.size();
    krVariant* filled[maxInlineParams];
    std::vector<krVariant*> heapFilled;
    krVariant** slotsIn = filled;
    if (n > maxInlineParams) {
        heapFilled.resize(n);
        slotsIn = heapFilled.data();
    }
    size_t count = 0;
    if (blocks) {
        for (; count < n && count < blocks->size(); ++count) {
            krVariant* v = (*blocks)[count]->eval();
            if (!v) break;
            slotsIn[count] = v;
        }
    } else if (values) {
        for (; count < n && count < values->size(); ++count) slotsIn[count] = (*values)[count]->addRef();
    }

    s->pushFrame(&layout);
    // A parameter name given twice keeps the later value.
    for (size_t i = 0; i < count; ++i) s->storeFrameValue(paramSlots[i], slotsIn[i]);

    krVariant* result = runBlocks();
    s->popFrame();
    if (s->getStatus() < krStatusExit) s->setStatus(krStatusRun);
    s->leave();
    letGo();
    return result;
}

void krFunction::drop() {
    if (--keepers <= 0 && holds <= 0) destroy();
}

void krFunction::letGo() {
    if (--holds <= 0 && keepers <= 0) destroy();
}

void krFunction::destroy() {
    // An event handler that nothing keeps leaves its script's list; an orphan's script is gone.
    if (!orphaned && script) script->forgetEventFunction(this);
    delete this;
}
