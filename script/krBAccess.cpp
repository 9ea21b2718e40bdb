// Variables, the current value, members and indexes.
#include "script/krBAccess.h"

#include "script/krFunction.h"
#include "script/krScript.h"

krBVar::krBVar(krBlock* p, std::string n, Scope s) : krBlock(p), name(std::move(n)), scope(s) {}

int32_t krBVar::findFrameSlot() {
    if (!layoutResolved) {
        layoutResolved = true;
        layout = frameLayout();
        if (layout) localSlot = layout->slot(name, true);
    }
    krFrameLayout* top = script->topLayout();
    // Code of another function's frame (a macro, an included file) finds its name by look-up.
    return top == layout ? localSlot : top->slot(name, false);
}

krVariant* krBVar::eval() {
    krScript* s = script;
    if (!s) return reportError(this, "Undefined variable: " + name);
    if (scope != Scope::fields && s->hasFrame()) {
        if (krVariant* v = s->frameValue(frameSlot())) return v->addRef();
    }
    if (scope != Scope::frame) {
        if (krVariant* v = s->fieldValue(fieldSlot())) return v->addRef();
    }
    return reportError(this, "Undefined variable: " + name);
}

namespace {
// The store rule for a borrowed value: into the old value when the types agree, else a replacement.
// Returns the value to put in the slot (null: the old value took the content).
krVariant* storeInto(krVariant* old, krVariant* value) {
    if (old && krCopyPlain(old, value)) return nullptr;
    if (old && old->type() == value->type() && !old->isFrozen()) {
        old->assign(value);
        return nullptr;
    }
    return value->share();
}
}

void krBVar::assign(krVariant* value) {
    if (!value || !script) return;
    krScript* s = script;
    const bool frame = s->hasFrame();
    if (scope == Scope::frame) {
        if (!frame) return;
        int32_t slot = frameSlot();
        if (slot < 0) slot = s->topLayout()->slot(name, true);
        if (krVariant* replacement = storeInto(s->frameValue(slot), value)) s->storeFrameValue(slot, replacement);
        return;
    }
    int32_t slot = -1;
    if (scope == Scope::any && frame) {
        slot = frameSlot();
        if (krVariant* old = s->frameValue(slot)) {
            if (krVariant* replacement = storeInto(old, value)) s->storeFrameValue(slot, replacement);
            return;
        }
    }
    const int32_t field = fieldSlot();
    krVariant* old = s->fieldValue(field);
    if (old || scope == Scope::fields || !frame) {
        if (krVariant* replacement = storeInto(old, value)) s->storeFieldValue(field, replacement);
        return;
    }
    // A first assignment inside a function makes a local.
    if (slot < 0) slot = s->topLayout()->slot(name, true);
    if (krVariant* replacement = value->share()) s->storeFrameValue(slot, replacement);
}

krVariant* krBCurrent::eval() {
    auto& stack = script->getCurrentValues();
    if (stack.empty()) return reportError(this, "Current variable ($_) undefined");
    return stack.back()->addRef();
}

void krBCurrent::assign(krVariant* value) {
    auto& stack = script->getCurrentValues();
    if (stack.empty()) {
        reportError(this, "Current variable ($_) undefined");
        return;
    }
    if (!value) return;
    if (stack.back()->isFrozen())
        reportError(this, "Target not assignable");
    else
        stack.back()->assign(value);
}

krArgValues::krArgValues(const std::vector<krBlock*>& blocks) {
    list.reserve(blocks.size());
    for (krBlock* b : blocks)
        if (krVariant* v = b->eval()) list.push_back(v);
}

krArgValues::~krArgValues() {
    for (krVariant* v : list) v->release();
}

krBCurrentKey::~krBCurrentKey() {
    for (krBlock* b : args) delete b;
}

krVariant* krBCurrentKey::eval() {
    auto& stack = script->getCurrentValues();
    if (stack.empty()) return reportError(this, "Current variable ($_) undefined");
    // Hold the value: a handler run by the member may pop the stack it came from.
    krVariant* target = stack.back()->addRef();
    krVariant* result;
    {
        krArgValues values(args);
        result = target->getMember(name, this, values.values());
    }
    target->release();
    return result;
}

void krBCurrentKey::assign(krVariant* value) {
    auto& stack = script->getCurrentValues();
    if (stack.empty() || !value) return;
    krVariant* target = stack.back()->addRef();
    target->setMember(name, value);
    target->release();
}

krBKey::~krBKey() {
    delete left;
    for (krBlock* b : args) delete b;
}

krVariant* krBKey::eval() {
    if (!left) return nullptr;
    krVariant* target = left->eval();
    if (!target) return nullptr;
    krVariant* result;
    {
        krArgValues values(args);
        result = target->getMember(name, this, values.values());
    }
    target->release();
    return result;
}

void krBKey::assign(krVariant* value) {
    if (!left || !value) return;
    krVariant* target = left->eval();
    if (!target) return;
    target->setMember(name, value);
    target->release();
}

bool krBKey::isConst() {
    if (!krFixed(left)) return false;
    for (krBlock* b : args)
        if (!krFixed(b)) return false;
    return true;
}

krBIndex::~krBIndex() {
    delete index;
    delete left;
}

krVariant* krBIndex::eval() {
    if (!left || !index) return nullptr;
    krVariant* target = left->eval();
    if (!target) return nullptr;
    krVariant* key = index->eval();
    krVariant* result = nullptr;
    if (key) {
        result = target->getIndex(key->toString());
        key->release();
    }
    target->release();
    return result;
}

void krBIndex::assign(krVariant* value) {
    if (!left || !value) return;
    krVariant* target = left->eval();
    if (!target) return;
    krVariant* key = index ? index->eval() : nullptr;
    if (key) {
        target->setIndex(key->toString(), value);
        key->release();
    } else {
        target->setIndex(std::to_string(target->count()), value);
    }
    target->release();
}

bool krBIndex::isConst() { return krFixed(left) && krFixed(index); }
