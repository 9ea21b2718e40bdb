// Script objects: member protocol defaults and event dispatch.
#include "core/krScriptObject.h"

#include "core/krHandles.h"
#include "script/krClassInfo.h"
#include "script/krFunction.h"
#include "script/krScript.h"
#include "script/krVObject.h"

const krArgs krScriptObject::noArgs;

// Nothing of its own: every name reaches the end of the ladder here and fires the event of that
// name, which is how scripts give objects methods.
const krClassInfo krScriptObject::info = {"krScriptObject", nullptr, nullptr, {}, {},
                                          "the end of every ladder: an unknown member fires the event of its name"};

namespace {
// Handlers of one event are copied before they run; a few fit on the stack.
constexpr size_t inlineHandlers = 8;
}

krScriptObject::~krScriptObject() {
    // Tell each script that bound a handler here, so that it never unbinds from a dead object.
    auto bound = std::move(events);
    events.clear();
    for (auto& entry : bound) {
        krScript* s = entry.second->getScript();
        if (s && !entry.second->isOrphaned()) s->forgetEvent(this, entry.first, entry.second);
    }
    krHandles::drop(handleId);
}

bool krScriptObject::release() {
    if (--refCount > 0) return false;
    delete this;
    return true;
}

int32_t krScriptObject::handle() {
    if (!handleId) handleId = krHandles::acquire(this, krHandleKind::object);
    return handleId;
}

krScriptObject* krScriptObject::fromHandle(int32_t h) {
    return static_cast<krScriptObject*>(krHandles::resolve(h, krHandleKind::object));
}

krVariant* krScriptObject::getMember(const std::string& name, krBlock*, const krArgs& args) {
    return fireEvent(name, args);
}

void krScriptObject::setMember(const std::string&, krVariant*) {}

void krScriptObject::addEvent(const std::string& name, krFunction* handler) {
    events.emplace(name, handler);
}

void krScriptObject::removeEvent(const std::string& name, krFunction* handler) {
    auto range = events.equal_range(name);
    for (auto it = range.first; it != range.second; ++it) {
        if (it->second == handler) {
            events.erase(it);
            return;
        }
    }
}

krVariant* krScriptObject::fireEvent(const std::string& name, const krArgs& args) {
    if (events.empty()) return nullptr;
    auto range = events.equal_range(name);
    if (range.first == range.second) return nullptr;

    // Handlers may bind, unbind, or destroy scripts while the event runs: work on a copy, and
    // hold each handler so that a destroyed script leaves it orphaned rather than dangling.
    krFunction* stackCopy[inlineHandlers];
    std::vector<krFunction*> heapCopy;
    krFunction** handlers = stackCopy;
    size_t count = 0;
    for (auto it = range.first; it != range.second; ++it) ++count;
    if (count > inlineHandlers) {
        heapCopy.resize(count);
        handlers = heapCopy.data();
    }
    size_t i = 0;
    for (auto it = range.first; it != range.second; ++it) {
        handlers[i] = it->second;
        handlers[i++]->hold();
    }

    auto* self = new krVObject(this);
    addRef();
    krVariant* result = nullptr;
    for (i = 0; i < count; ++i) {
        krFunction* handler = handlers[i];
        if (handler->isOrphaned()) continue;
        if (result) result->release();
        std::vector<krVariant*>& current = handler->getScript()->getCurrentValues();
        current.push_back(self);
        result = handler->call(nullptr, &args);
        // The handler's script is still alive: a running script is never destroyed.
        handler->getScript()->getCurrentValues().pop_back();
    }
    for (i = 0; i < count; ++i) handlers[i]->letGo();
    self->release();
    release();
    return result;
}
