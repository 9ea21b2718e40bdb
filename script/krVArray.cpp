// Array values: an ordered map of owned elements, with iterations that survive changes.
#include "script/krVArray.h"

#include <algorithm>

#include "script/krClassInfo.h"

namespace {
const krMemberInfo arrayMembers[] = {
    {"count", krRead, "int", "the number of elements"},
    {"remove", krCall, "(values...)", "takes out the first element equal to each int, object or script value"},
    {"contains", krCall, "(values...)", "whether an element equals one of the int, object or script values"},
};
}

const krClassInfo krVArray::info = {"krVArray", nullptr, nullptr, arrayMembers, {},
                                    "an array value: elements under string keys, in key order"};

krVArray::~krVArray() {
    for (krIterState* s : iterations) s->array = nullptr;
    for (auto& item : items) item.second->release();
}

krVariant* krVArray::clone() {
    auto* copy = new krVArray();
    copy->copyFrom(this);
    return copy;
}

void krVArray::copyFrom(krVArray* source) {
    for (auto& item : source->items) {
        if (krVariant::overLimit()) return;
        krVariant* element = item.second->clone();
        if (element) items.emplace(item.first, element);
    }
}

void krVArray::reset() {
    if (isFrozen()) return;
    Items old;
    old.swap(items);
    for (krIterState* s : iterations) s->position = items.end();
    // Elements are released after the map is empty, so that a destructor reaching back into this
    // array finds it already cleared.
    for (auto& item : old) item.second->release();
}

// The text forms stop growing once past the longest text a script may build, so that an array of
// long strings cannot make one without bound; whoever makes a value of the text refuses it then.
std::string krVArray::toString() {
    std::string text;
    for (auto& item : items) {
        if (text.size() > krConvert::maxStringBytes) break;
        text += item.second->toString();
    }
    return text;
}

std::string krVArray::toLiteral() {
    std::string text = "[";
    bool first = true;
    for (auto& item : items) {
        if (text.size() > krConvert::maxStringBytes) break;
        if (!first) text += ", ";
        first = false;
        text += item.second->toLiteral();
    }
    return text + "]";
}

void krVArray::assign(krVariant* v) {
    if (isFrozen() || v == this) return;
    reset();
    if (v->type() == krTypeArray) copyFrom(static_cast<krVArray*>(v));
}

void krVArray::freeze() {
    krVariant::freeze();
    for (auto& item : items) item.second->freeze();
}

krIterState* krVArray::iterBegin() {
    auto* state = new krIterState{this, items.begin()};
    iterations.push_back(state);
    return state;
}

krVariant* krVArray::iterNext(krIterState*& state) {
    if (!state) return nullptr;
    if (state->array != this || state->position == items.end()) {
        iterFree(state);
        return nullptr;
    }
    krVariant* element = state->position->second->addRef();
    ++state->position;
    return element;
}

void krVArray::detach(krIterState* state) {
    auto it = std::find(iterations.begin(), iterations.end(), state);
    if (it != iterations.end()) iterations.erase(it);
}

void krVArray::erase(Items::iterator it) {
    for (krIterState* s : iterations)
        if (s->position == it) ++s->position;
    krVariant* element = it->second;
    items.erase(it);
    element->release();
}

bool krVArray::matches(krVariant* element, krVariant* probe) {
    const int t = probe->type();
    if (t != krTypeInt && t != krTypeObject && t != krTypeScript) return false;
    return element->toInt() == probe->toInt();
}

krVariant* krVArray::getMember(const std::string& name, krBlock*, const krArgs& args) {
    if (name == "count") return new krVInt(count());
    if (name == "remove") {
        if (isFrozen()) return nullptr;
        for (krVariant* probe : args) {
            for (auto it = items.begin(); it != items.end(); ++it) {
                if (matches(it->second, probe)) {
                    erase(it);
                    break;
                }
            }
        }
        return nullptr;
    }
    if (name == "contains") {
        for (krVariant* probe : args)
            for (auto& item : items)
                if (matches(item.second, probe)) return new krVBool(true);
        return new krVBool(false);
    }
    return nullptr;
}

krVariant* krVArray::getIndex(const std::string& key) {
    auto it = items.find(key);
    return it == items.end() ? nullptr : it->second->addRef();
}

void krVArray::setIndex(const std::string& key, krVariant* value) {
    if (!indexWritable() || !value) return;
    krVariant* stored = value->share();
    if (!stored) return;
    put(key, stored);
}

void krVArray::put(const std::string& key, krVariant* value) {
    auto [it, inserted] = items.try_emplace(key, value);
    if (!inserted) {
        krVariant* old = it->second;
        it->second = value;
        old->release();
    }
}

bool krVArray::isConst() {
    for (auto& item : items)
        if (!item.second->isConst()) return false;
    return true;
}
