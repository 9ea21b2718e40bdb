// Object, script and macro values.
#include "script/krVObject.h"

#include "platform/krSystem.h"
#include "script/krClassInfo.h"
#include "script/krFunction.h"
#include "script/krScript.h"

namespace {
const krMemberInfo scriptMembers[] = {
    {"updateFileVars", krCall, "(names...)", "writes the present values of these variables into the script's own source"},
    {"clearEvent", krCall, "(object, event)", "unbinds the script's handlers of that event from the object"},
};
}

// Further names call the script's function of that name, or read or write its variable.
const krClassInfo krVScript::info = {"krVScript", nullptr, nullptr, scriptMembers, {},
                                     "a loaded script: other names reach its functions and variables"};

krVObject* krVObject::fromHandle(int32_t h) {
    auto* v = new krVObject(nullptr);
    v->handle = h;
    return v;
}

std::string krVObject::toString() {
    krScriptObject* o = object();
    if (!o) return std::string();
    krVariant* name = o->getMember("name", nullptr, krScriptObject::noArgs);
    if (!name) return std::string();
    std::string text = name->toString();
    name->release();
    return text;
}

std::string krVObject::toLiteral() {
    krScriptObject* o = object();
    if (!o) return "0";
    krVariant* name = o->getMember("name", nullptr, krScriptObject::noArgs);
    if (!name) return "0";
    std::string text = name->toLiteral();
    name->release();
    return text;
}

krVariant* krVObject::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    krScriptObject* o = object();
    return o ? o->getMember(name, caller, args) : nullptr;
}

void krVObject::setMember(const std::string& name, krVariant* value) {
    krScriptObject* o = object();
    if (o && value) o->setMember(name, value);
}

krVScript::krVScript(krScript* s) : krVHandle(krTypeScript, s ? s->handle() : 0) {}

krVScript* krVScript::fromHandle(int32_t h) {
    auto* v = new krVScript(nullptr);
    v->handle = h;
    return v;
}

krScript* krVScript::script() const { return krScript::fromHandle(handle); }

std::string krVScript::toString() {
    krScript* s = script();
    return s ? s->getFile() : std::string();
}

std::string krVScript::toLiteral() {
    krScript* s = script();
    return s ? krConvert::quoted(s->getFile()) : "0";
}

krVariant* krVScript::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    krScript* s = script();
    if (!s) return nullptr;
    if (name == "updateFileVars") {
        if (!s->updateFileVars(args))
            reportError(caller, "Updating script \"" + s->getFile() + "\" failed");
        return nullptr;
    }
    if (name == "clearEvent" && args.size() == 2) {
        s->clearEvent(krScriptObject::fromHandle(args[0]->toInt()), args[1]->toString());
        return nullptr;
    }
    if (krFunction* f = s->getFunction(name)) return f->call(nullptr, &args);
    return s->getField(name);
}

void krVScript::setMember(const std::string& name, krVariant* value) {
    krScript* s = script();
    if (!s || !value) return;
    if (krVariant* stored = value->share()) s->setVariable(name, stored);
}

krVMacro::~krVMacro() { delete expr; }

void krVMacro::reset() {
    delete expr;
    expr = nullptr;
}

krVariant* krVMacro::evaluate() {
    if (!expr) return nullptr;
    // A macro that reads itself would recurse without end.
    if (krSystem::stackLow()) return reportError(expr, "Recursion too deep");
    return expr->eval();
}

namespace {
// Converts the macro's present value and releases it; `empty` when there is none.
template <typename T, typename Convert>
T convertValue(krVariant* v, T empty, Convert convert) {
    if (!v) return empty;
    T result = convert(v);
    v->release();
    return result;
}
}

bool krVMacro::toBool() {
    return convertValue(evaluate(), false, [](krVariant* v) { return v->toBool(); });
}

int32_t krVMacro::toInt() {
    return convertValue(evaluate(), 0, [](krVariant* v) { return v->toInt(); });
}

float krVMacro::toFloat() {
    return convertValue(evaluate(), 0.0f, [](krVariant* v) { return v->toFloat(); });
}

std::string krVMacro::toString() {
    return convertValue(evaluate(), std::string(), [](krVariant* v) { return v->toString(); });
}

std::string krVMacro::toLiteral() {
    return convertValue(evaluate(), std::string("0"), [](krVariant* v) { return v->toLiteral(); });
}
