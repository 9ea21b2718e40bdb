// krBlock: a node of a parsed script. Scripts run by walking these trees: `eval` returns a value
// the caller owns, or null for "no value". Control flow unwinds by a status number kept in the
// script, never by exceptions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "script/krVariant.h"

class krScript;
class krFrameLayout;

// Control-flow status of a script while it runs.
enum krStatus : int32_t {
    krStatusRun = 0,
    krStatusContinue = 1,
    krStatusBreak = 2,
    krStatusReturn = 3,
    krStatusExit = 4,
};

// Marks the line numbers of included files: a report names the including file instead.
constexpr int32_t krIncludedLine = INT32_MIN;

class krBlock {
public:
    explicit krBlock(krBlock* parent);
    krBlock(const krBlock&) = delete;
    krBlock& operator=(const krBlock&) = delete;
    virtual ~krBlock() { --instanceCount; }

    virtual krVariant* eval();
    // Writes `value` (borrowed) into what this node names.
    virtual void assign(krVariant* value);
    // An operator changed a copy of this node's frozen value in place (a variable that holds a
    // constant, as a parameter aliasing a literal does); a node that names storage keeps the
    // copy, anything else lets the change stay with the temporary.
    virtual void adoptCopy(krVariant*) {}
    // Whether `v` is a temporary this node keeps for itself (and so no place to write to).
    virtual bool ownsTemporary(krVariant*) const { return false; }
    virtual void setParent(krBlock* p);
    krBlock* getParent() const { return parent; }
    krScript* getScript() const { return script; }
    void setLine(int32_t l) { line = l; }
    int32_t getLine() const { return line; }
    // Whether the node's value is fixed once it is built, so the parser may fold it. Nodes are
    // asked right after their operands were built and folded: an operand is fixed only as a
    // folded constant, so the answer looks one level down and never walks a whole chain.
    virtual bool isConst() { return false; }
    // A folded constant.
    virtual bool isLiteral() const { return false; }
    // The variable layout of the function this node belongs to; null outside functions.
    virtual krFrameLayout* frameLayout();

    // Live nodes in the process, read by scripts as KRSCRIPT_BLOCKCOUNT.
    static int32_t instanceCount;

protected:
    krBlock* parent = nullptr;
    krScript* script = nullptr;
    int32_t line = 0;
};

// A sequence of statements, run in order until the status asks to unwind.
class krMultiBlock : public krBlock {
public:
    explicit krMultiBlock(krBlock* parent) : krBlock(parent) {}
    ~krMultiBlock() override;
    krVariant* eval() override;
    virtual void addBlock(krBlock* block);
    void clearBlocks();
    size_t blockCount() const { return blocks.size(); }

protected:
    // Runs the statements; the value of the last one run, or null.
    krVariant* runBlocks();
    std::vector<krBlock*> blocks;
};

class krBConst : public krBlock {
public:
    // Takes over the reference of `v` and, unless told otherwise, freezes it: a constant never
    // changes. The arguments of a macro stay live values of their caller and are not frozen.
    // A null `v` is the folded result of an expression that gave no value: it still stands as a
    // statement or argument, and gives null.
    krBConst(krBlock* parent, krVariant* v, bool freeze = true);
    ~krBConst() override {
        if (value) value->release();
    }
    krVariant* eval() override { return value ? value->addRef() : nullptr; }
    void assign(krVariant* v) override;
    bool isConst() override { return !value || value->isConst(); }
    bool isLiteral() const override { return true; }

private:
    krVariant* value;
};

class krBConstArray : public krBlock {
public:
    explicit krBConstArray(krBlock* parent) : krBlock(parent) {}
    ~krBConstArray() override;
    krVariant* eval() override;
    bool isConst() override;
    virtual void addArg(krBlock* element) { elements.push_back(element); }

private:
    std::vector<krBlock*> elements;
};

// An operand of a node being folded that is fixed: a folded constant with a constant value.
inline bool krFixed(krBlock* operand) { return operand && operand->isLiteral() && operand->isConst(); }

// The reports of script errors: "Scripting error" with file and line, a newline, the message.
// The handler shows it; at start a message box, once the host runs the root's errorMsg.
namespace krScriptErrors {
    using Handler = void (*)(const std::string& text);
    void setErrorHandler(Handler handler);
    Handler defaultHandler();
}
// Always returns null, so that failing nodes can return its result. The block gives the script
// (for the file name) and the line.
krVariant* reportError(const krBlock* block, const std::string& message);
// The same with the line given apart, for reports of the parser at the cursor's line.
krVariant* reportErrorAt(const krScript* script, int32_t line, const std::string& message);
