// Loaded scripts: variables by the store rule, frames, functions, bindings, settings files.
#include "script/krScript.h"

#include <algorithm>
#include <cstdio>

#include "core/krHandles.h"
#include "script/krParser.h"

int64_t krScript::stepsLeft = -1;

krScript::krScript() : krMultiBlock(nullptr) { script = this; }

krScript::~krScript() {
    // The destructor function runs while the script is still whole.
    if (destructor) {
        status = krStatusRun;
        krFunction* d = destructor;
        destructor = nullptr;
        if (krVariant* result = d->call(nullptr, nullptr)) result->release();
        d->retire();
    }
    for (krVariant*& v : fieldValues) {
        krVariant* old = v;
        v = nullptr;
        if (old) old->release();
    }
    deleteFunctions();
    auto records = std::move(bindings);
    bindings.clear();
    for (Binding& b : records) {
        b.object->removeEvent(b.name, b.handler);
        b.handler->drop();
    }
    // Handlers that statements still keep (in code not run, or held by a dispatch) go with them.
    auto handlers = std::move(eventFunctions);
    eventFunctions.clear();
    for (krFunction* f : handlers) f->orphan();
    while (hasFrame()) popFrame();
    krHandles::drop(handleId);
}

void krScript::deleteFunctions() {
    auto old = std::move(functions);
    functions.clear();
    ++functionTableVersion;
    for (auto& entry : old) entry.second->retire();
}

krVariant* krScript::eval() {
    status = krStatusRun;
    enter();
    krVariant* result = runBlocks();
    status = krStatusRun;
    // The main code runs once; what lives on are fields, functions and bindings.
    clearBlocks();
    leave();
    return result;
}

void krScript::load(const char* text) {
    deleteFunctions();
    clearBlocks();
    krParser::parseFile(this, text, 0);
}

void krScript::reload(const char* text) {
    clearBlocks();
    krParser::parseFile(this, text, 0);
}

void krScript::forgetEvent(krScriptObject* object, const std::string& name, krFunction* handler) {
    for (auto it = bindings.begin(); it != bindings.end(); ++it) {
        if (it->object == object && it->handler == handler && it->name == name) {
            bindings.erase(it);
            handler->drop();
            return;
        }
    }
}

void krScript::forgetEventFunction(krFunction* function) {
    auto it = std::find(eventFunctions.begin(), eventFunctions.end(), function);
    if (it != eventFunctions.end()) eventFunctions.erase(it);
}

int32_t krScript::fieldSlot(const std::string& name) {
    auto it = fieldIndex.find(name);
    if (it != fieldIndex.end()) return it->second;
    const auto slot = static_cast<int32_t>(fieldValues.size());
    fieldValues.push_back(nullptr);
    fieldIndex.emplace(name, slot);
    return slot;
}

void krScript::storeFieldValue(int32_t slot, krVariant* value) {
    krVariant* old = fieldValues[static_cast<size_t>(slot)];
    fieldValues[static_cast<size_t>(slot)] = value;
    if (old) old->release();
}

void krScript::pushFrame(krFrameLayout* layout) {
    if (top.layout) frames.push_back(top);
    top = Frame{layout, static_cast<int32_t>(slots.size()), layout->size()};
    slots.resize(slots.size() + static_cast<size_t>(top.size), nullptr);
}

void krScript::popFrame() {
    if (!top.layout) return;
    // Releasing a value runs no script code, so the slots can go in place.
    const auto base = static_cast<size_t>(top.base);
    for (size_t i = slots.size(); i-- > base;)
        if (slots[i]) slots[i]->release();
    slots.resize(base);
    if (frames.empty()) {
        top = Frame{nullptr, 0, 0};
    } else {
        top = frames.back();
        frames.pop_back();
    }
}

void krScript::storeFrameValue(int32_t slot, krVariant* value) {
    Frame& f = top;
    if (slot >= f.size) {
        f.size = slot + 1;
        slots.resize(static_cast<size_t>(f.base + f.size), nullptr);
    }
    krVariant*& place = slots[static_cast<size_t>(f.base + slot)];
    krVariant* old = place;
    place = value;
    if (old) old->release();
}

void krScript::store(krVariant*& slot, krVariant* value) {
    krVariant* old = slot;
    if (old && old->type() == value->type() && !old->isFrozen()) {
        old->assign(value);
        value->release();
        return;
    }
    slot = value;
    if (old) old->release();
}

krVariant* krScript::getVariable(const std::string& name) {
    if (krVariant* v = getLocal(name)) return v;
    return getField(name);
}

krVariant* krScript::getField(const std::string& name) {
    auto it = fieldIndex.find(name);
    if (it == fieldIndex.end()) return nullptr;
    krVariant* v = fieldValues[static_cast<size_t>(it->second)];
    return v ? v->addRef() : nullptr;
}

krVariant* krScript::getLocal(const std::string& name) {
    if (!hasFrame()) return nullptr;
    krVariant* v = frameValue(top.layout->slot(name, false));
    return v ? v->addRef() : nullptr;
}

void krScript::setVariable(const std::string& name, krVariant* value) {
    if (!value) return;
    if (hasFrame()) {
        const int32_t slot = top.layout->slot(name, false);
        if (frameValue(slot)) {
            setLocal(name, value);
            return;
        }
    }
    auto it = fieldIndex.find(name);
    if ((it != fieldIndex.end() && fieldValues[static_cast<size_t>(it->second)]) || !hasFrame())
        setField(name, value);
    else
        setLocal(name, value);
}

void krScript::setField(const std::string& name, krVariant* value) {
    if (!value) return;
    const auto slot = static_cast<size_t>(fieldSlot(name));
    store(fieldValues[slot], value);
}

void krScript::setLocal(const std::string& name, krVariant* value) {
    if (!value) return;
    if (!hasFrame()) {
        value->release();
        return;
    }
    const int32_t index = top.layout->slot(name, true);
    // Make room first, so that the slot exists for the store rule.
    if (!frameValue(index)) {
        storeFrameValue(index, value);
        return;
    }
    store(slots[static_cast<size_t>(top.base + index)], value);
}

krFunction* krScript::getFunction(const std::string& name) {
    auto it = functions.find(name);
    return it == functions.end() ? nullptr : it->second;
}

void krScript::setFunction(const std::string& name, krFunction* function) {
    ++functionTableVersion;
    function->keep();
    auto [it, inserted] = functions.try_emplace(name, function);
    if (inserted) return;
    krFunction* old = it->second;
    it->second = function;
    if (old != function) old->retire();
    else function->drop();
}

void krScript::setDestructor(krFunction* function) {
    krFunction* old = destructor;
    function->keep();
    destructor = function;
    if (old && old != function) old->retire();
    else if (old) function->drop();
}

void krScript::bindEvent(krScriptObject* object, const std::string& name, krFunction* handler) {
    if (!object || !handler) return;
    bindings.push_back(Binding{object, name, handler});
    handler->keep();
    object->addEvent(name, handler);
}

void krScript::clearEvent(krScriptObject* object, const std::string& name) {
    if (!object) return;
    for (auto it = bindings.begin(); it != bindings.end(); ++it) {
        if (it->object == object && it->name == name) {
            krFunction* handler = it->handler;
            bindings.erase(it);
            object->removeEvent(name, handler);
            handler->drop();
            return;
        }
    }
}

namespace {
bool readLines(const std::string& path, std::vector<std::string>& lines) {
    FILE* f = std::fopen(path.c_str(), "r");
    if (!f) return false;
    std::string text;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) text.append(buffer, n);
    std::fclose(f);
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
        start = end + 1;
    }
    if (!lines.empty() && lines.back().empty()) lines.pop_back();
    return true;
}
}

bool krScript::updateFileVars(const krArgs& names) {
    if (names.empty()) return false;
    std::vector<std::string> lines;
    // A source that cannot be read is a failure: rewriting it would lose the script.
    if (!readLines(fileName, lines)) return false;
    for (krVariant* n : names) {
        const std::string name = n->toString();
        krVariant* value = getField(name);
        if (!value) continue;
        const std::string prefix = "$" + name + " ";
        const std::string line = prefix + "= " + value->toLiteral() + ";";
        value->release();
        bool replaced = false;
        for (std::string& l : lines) {
            if (l.compare(0, prefix.size(), prefix) == 0) {
                l = line;
                replaced = true;
                break;
            }
        }
        if (!replaced) lines.push_back(line);
    }
    FILE* f = std::fopen(fileName.c_str(), "w");
    if (!f) return false;
    for (const std::string& l : lines) {
        std::fwrite(l.data(), 1, l.size(), f);
        std::fputc('\n', f);
    }
    std::fclose(f);
    return true;
}

int32_t krScript::handle() {
    if (!handleId) handleId = krHandles::acquire(this, krHandleKind::script);
    return handleId;
}

krScript* krScript::fromHandle(int32_t h) {
    return static_cast<krScript*>(krHandles::resolve(h, krHandleKind::script));
}
