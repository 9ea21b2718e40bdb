// Block tree basics: parenthood, statement sequences, constants, and the error report.
#include "script/krBlock.h"

#include "platform/krSystem.h"
#include "script/krScript.h"
#include "script/krVArray.h"

int32_t krBlock::instanceCount = 0;

krBlock::krBlock(krBlock* p) {
    ++instanceCount;
    setParent(p);
}

krVariant* krBlock::eval() { return reportError(this, "Statement not readable"); }

void krBlock::assign(krVariant* value) {
    if (!value) return;
    krVariant* target = eval();
    if (!target) return;
    // Only a value that someone else holds too (a variable, an element) is a place to write to.
    if (target->getRefCount() < 2 || target->isFrozen() || ownsTemporary(target))
        reportError(this, "Target not assignable");
    else
        target->assign(value);
    target->release();
}

void krBlock::setParent(krBlock* p) {
    parent = p;
    script = p ? p->script : nullptr;
}

krFrameLayout* krBlock::frameLayout() {
    for (krBlock* b = parent; b; b = b->parent)
        if (krFrameLayout* l = b->frameLayout()) return l;
    return nullptr;
}

krMultiBlock::~krMultiBlock() { clearBlocks(); }

void krMultiBlock::clearBlocks() {
    while (!blocks.empty()) {
        krBlock* b = blocks.back();
        blocks.pop_back();
        delete b;
    }
}

void krMultiBlock::addBlock(krBlock* block) {
    if (block) blocks.push_back(block);
}

krVariant* krMultiBlock::runBlocks() {
    krVariant* result = nullptr;
    for (size_t i = 0; i < blocks.size(); ++i) {
        if (result) result->release();
        result = blocks[i]->eval();
        if (script && script->getStatus() > krStatusRun) break;
        if (krVariant::overLimit() && script) {
            reportError(blocks[i], "Out of script memory");
            script->setStatus(krStatusExit);
            break;
        }
    }
    return result;
}

krVariant* krMultiBlock::eval() { return runBlocks(); }

krBConst::krBConst(krBlock* p, krVariant* v, bool freeze) : krBlock(p), value(v) {
    if (freeze && value) value->freeze();
}

void krBConst::assign(krVariant* v) {
    if (v) reportError(this, "Target not assignable");
}

krBConstArray::~krBConstArray() {
    for (krBlock* b : elements) delete b;
}

krVariant* krBConstArray::eval() {
    auto* array = new krVArray();
    for (size_t i = 0; i < elements.size(); ++i) {
        krVariant* v = elements[i]->eval();
        // A null element leaves a gap in the keys.
        if (v) array->put(std::to_string(i), v);
    }
    return array;
}

bool krBConstArray::isConst() {
    for (krBlock* b : elements)
        if (!krFixed(b)) return false;
    return true;
}

namespace {
// Reports raised while a report is being delivered, counted from the outermost.
constexpr int maxNestedReports = 4;

void showInBox(const std::string& text) { krSystem::messageBox(text, "Error"); }
krScriptErrors::Handler errorHandler = showInBox;
}

void krScriptErrors::setErrorHandler(Handler handler) { errorHandler = handler ? handler : showInBox; }
krScriptErrors::Handler krScriptErrors::defaultHandler() { return showInBox; }

krVariant* reportError(const krBlock* block, const std::string& message) {
    return reportErrorAt(block ? block->getScript() : nullptr, block ? block->getLine() : 0, message);
}

krVariant* reportErrorAt(const krScript* script, int32_t line, const std::string& message) {
    std::string text = "Scripting error";
    if (script) {
        // The top bit marks lines of included files; the count then continues from there.
        const std::string& file = script->getFile();
        if (line < 0)
            text += " in file included by \"" + file + "\" at line " +
                    std::to_string(static_cast<int64_t>(line) - INT32_MIN + 1);
        else
            text += " in \"" + file + "\" at line " + std::to_string(static_cast<int64_t>(line) + 1);
    }
    text += "\n" + message;
    // Handlers of errors may fail again (a handler that errs, a stack that ran low); a few nested
    // reports get through, deeper ones only to standard error, so reporting cannot recurse forever.
    static int depth = 0;
    if (depth >= maxNestedReports) {
        krSystem::writeError(text);
        return nullptr;
    }
    ++depth;
    {
        krSystem::StackReserve reserve;
        errorHandler(text);
    }
    --depth;
    return nullptr;
}
