// Function calls and event bindings.
#include "script/krBFuncCall.h"

#include "script/krBAccess.h"
#include "script/krFunction.h"
#include "script/krScript.h"
#include "script/krVObject.h"

krBFuncCall::~krBFuncCall() {
    for (krBlock* b : args) delete b;
}

bool krBFuncCall::isConst() {
    if (!foldable) return false;
    for (krBlock* b : args)
        if (!krFixed(b)) return false;
    return true;
}

krVariant* krBFuncCallStr::eval() {
    if (!script) return reportError(this, "Undefined function: " + name);
    if (!cached || cachedVersion != script->functionsVersion()) {
        cached = script->getFunction(name);
        cachedVersion = script->functionsVersion();
    }
    if (!cached) return reportError(this, "Undefined function: " + name);
    return cached->call(&args, nullptr);
}

krVariant* krBFuncCallPtr::eval() {
    krArgValues values(args);
    return function(this, values.values());
}

krVariant* krBFuncCallExternal::eval() {
    std::vector<krVariant*> values;
    values.reserve(args.size());
    bool complete = true;
    for (krBlock* b : args) {
        krVariant* v = b->eval();
        if (!v) complete = false;
        values.push_back(v);
    }
    krVariant* result = complete ? function(static_cast<int>(values.size()), values.data()) : nullptr;
    for (krVariant* v : values)
        if (v) v->release();
    return result;
}

namespace {
void bind(krScript* s, krBlock* objectExpr, const std::string& name, krFunction* handler) {
    krVariant* target = objectExpr->eval();
    if (!target) return;
    s->bindEvent(krScriptObject::fromHandle(target->toInt()), name, handler);
    target->release();
}
}

krBEventInit::~krBEventInit() {
    delete object;
    if (handler) handler->drop();
}

krVariant* krBEventInit::eval() {
    if (object && handler && script) bind(script, object, name, handler);
    return nullptr;
}

krBDynEventInit::~krBDynEventInit() {
    delete nameExpr;
    delete object;
    if (handler) handler->drop();
}

krVariant* krBDynEventInit::eval() {
    if (!object || !handler || !nameExpr || !script) return nullptr;
    krVariant* name = nameExpr->eval();
    if (!name) return nullptr;
    bind(script, object, name->toString(), handler);
    name->release();
    return nullptr;
}
