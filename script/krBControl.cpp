// Conditions, loops, `with`, and the statements that unwind.
#include "script/krBControl.h"

#include "script/krScript.h"

namespace {
// After a loop: break and continue stop here, return and exit go on outward.
void endLoop(krScript* s) {
    if (s->getStatus() < krStatusReturn) s->setStatus(krStatusRun);
}

// After one pass of a loop body: true when the loop must stop.
bool leavesLoop(krScript* s) {
    if (!krScript::spendStep()) s->setStatus(krStatusExit);
    if (s->getStatus() > krStatusContinue) return true;
    if (s->getStatus() == krStatusContinue) s->setStatus(krStatusRun);
    return false;
}

// The truth of a condition node; null results count as false in loops.
bool holds(krBlock* cond) {
    krVariant* v = cond->eval();
    if (!v) return false;
    const bool result = krTruth(v);
    v->release();
    return result;
}
}

krBIf::~krBIf() {
    delete cond;
    delete otherwise;
}

krVariant* krBIf::eval() {
    if (cond) {
        krVariant* v = cond->eval();
        // A condition without a value takes the true branch.
        if (v) {
            const bool truth = krTruth(v);
            v->release();
            if (!truth) return otherwise ? otherwise->eval() : nullptr;
        }
    }
    return runBlocks();
}

krBWhile::~krBWhile() { delete cond; }

krVariant* krBWhile::eval() {
    krVariant* result = nullptr;
    while (cond && holds(cond)) {
        if (result) result->release();
        result = runBlocks();
        if (leavesLoop(script)) break;
    }
    endLoop(script);
    return result;
}

krBFor::~krBFor() {
    delete init;
    delete cond;
    delete next;
}

krVariant* krBFor::eval() {
    // A loop with an empty part does not run at all.
    if (!init || !cond || !next) return nullptr;
    if (krVariant* v = init->eval()) v->release();
    krVariant* result = nullptr;
    while (holds(cond)) {
        if (result) result->release();
        result = runBlocks();
        if (leavesLoop(script)) break;
        if (krVariant* v = next->eval()) v->release();
    }
    endLoop(script);
    return result;
}

krBForeach::~krBForeach() { delete expr; }

krVariant* krBForeach::eval() {
    if (!expr) return nullptr;
    krVariant* collection = expr->eval();
    if (!collection) return nullptr;
    krVariant* result = nullptr;
    auto& stack = script->getCurrentValues();
    krIterState* state = collection->iterBegin();
    while (state) {
        krVariant* element = collection->iterNext(state);
        if (!element) break;
        if (result) result->release();
        stack.push_back(element);
        result = runBlocks();
        stack.pop_back();
        element->release();
        if (leavesLoop(script)) break;
    }
    krVariant::iterFree(state);
    collection->release();
    endLoop(script);
    return result;
}

krBWith::~krBWith() { delete expr; }

krVariant* krBWith::eval() {
    if (!expr) return nullptr;
    krVariant* v = expr->eval();
    if (!v) return nullptr;
    auto& stack = script->getCurrentValues();
    stack.push_back(v);
    krVariant* result = runBlocks();
    stack.pop_back();
    v->release();
    return result;
}

krBReturn::~krBReturn() { delete value; }

krVariant* krBReturn::eval() {
    krVariant* v = value ? value->eval() : nullptr;
    script->setStatus(status);
    return v;
}

krVariant* krBContinue::eval() {
    script->setStatus(krStatusContinue);
    return nullptr;
}

krVariant* krBBreak::eval() {
    script->setStatus(krStatusBreak);
    return nullptr;
}
