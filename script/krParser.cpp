// The parser. One cursor and one line counter walk the text; every parse function gets the node
// that becomes the parent of what it makes. The cursor never moves past the terminating NUL.
#include "script/krParser.h"

#include <cstring>

#include "platform/krSystem.h"
#include "script/krBAccess.h"
#include "script/krBControl.h"
#include "script/krBFuncCall.h"
#include "script/krBOperator.h"
#include "script/krFunction.h"
#include "script/krScript.h"
#include "script/krSymbols.h"
#include "script/krVArray.h"

namespace {

const krArgs emptyArgs;
const krArgs* parseArgs = &emptyArgs;

// Literals of these values share one value each instead of allocating per node.
struct SharedConstants {
    krVariant* int0 = nullptr;
    krVariant* int1 = nullptr;
    krVariant* float0 = nullptr;
    krVariant* float1 = nullptr;
    krVariant* emptyString = nullptr;
} shared;

krVariant* sharedOrNew(krVariant*& slot, krVariant* fresh) {
    if (!slot) {
        slot = fresh;
        slot->freeze();
        return slot->addRef();
    }
    delete fresh;
    return slot->addRef();
}

bool isWordStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isWordChar(char c) { return isWordStart(c) || (c >= '0' && c <= '9'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isOperatorChar(char c) { return c != 0 && std::strchr("+-*/%!&|^~<=>?@#", c) != nullptr; }

std::string charText(char c) { return c ? std::string(1, c) : std::string(); }

// One entry of an expression's flat list: an operand, or an operator waiting for its sides.
struct Slot {
    krBlock* operand;
    krBOperator* op;
};

class Parser {
public:
    Parser(const char* text, int32_t firstLine) : p(text ? text : ""), line(firstLine) {}

    void parseFile(krMultiBlock* block);
    krBlock* parseExpression(krBlock* parent, const char* terminators);

private:
    // Result of a statement: the node, and whether it ended in a block of its own.
    struct Statement {
        krBlock* node = nullptr;
        bool blockEnd = false;
    };

    void skip();
    // Reports name the file of the block being built and the line the cursor is on. Once the
    // text is abandoned for its depth, the levels that unwind have nothing more to say.
    void report(krBlock* where, const std::string& message) {
        if (!abandoned) reportErrorAt(where ? where->getScript() : nullptr, line, message);
    }
    void expected(krBlock* where, const char* what) {
        report(where, std::string(what) + " expected, but " + charText(*p) + " found");
    }
    // Consumes `c` if it stands at the cursor, else reports it as expected and leaves the cursor.
    bool expect(krBlock* where, char c);
    void consumeOne() {
        if (*p) ++p;
    }
    bool tooDeep(krBlock* where);
    void abandon(krBlock* where);

    std::string readWord();
    krBOperator* readOperator(krBlock* parent);
    krBlock* parseOperand(krBlock* parent, const char* terminators, Statement& statement);
    krBlock* parseString(krBlock* parent);
    krBlock* parseNumber(krBlock* parent);
    krBlock* parseArray(krBlock* parent);
    krBlock* parseVariable(krBlock* parent);
    krBlock* parseMember(krBlock* parent, krBlock* left);
    krBlock* parseIndex(krBlock* parent, krBlock* left);
    krBlock* parseWord(krBlock* parent, const std::string& word, Statement& statement);
    template <typename Node>
    void parseArguments(Node* call);
    void parseParams(krFunction* f);
    void parseBody(krMultiBlock* block);
    krBIf* parseIf(krBlock* parent);
    krBlock* parseCondition(krBlock* node);
    krFunction* newFunction(krBlock* parent);

    krBlock* buildTree(std::vector<Slot>& slots, size_t lo, size_t hi);
    krBlock* fold(krBlock* node);
    krBlock* makeLiteral(krBlock* parent, krVariant* value);

    const char* p;
    int32_t line;
    bool abandoned = false;
};

void Parser::skip() {
    for (;;) {
        const char c = *p;
        if (c == 0) return;
        // Control characters, space and every byte above 0x7F count as white space.
        if (static_cast<signed char>(c) <= ' ') {
            if (c == '\n') ++line;
            ++p;
        } else if (c == '/' && p[1] == '/') {
            while (*p && *p != '\n') ++p;
        } else if (c == '/' && p[1] == '*') {
            p += 2;
            while (*p && !(p[0] == '*' && p[1] == '/')) {
                if (*p == '\n') ++line;
                ++p;
            }
            if (*p) p += 2;
        } else {
            return;
        }
    }
}

bool Parser::expect(krBlock* where, char c) {
    if (*p == c) {
        ++p;
        return true;
    }
    const char what[2] = {c, 0};
    expected(where, what);
    return false;
}

bool Parser::tooDeep(krBlock* where) {
    if (abandoned) return true;
    if (!krSystem::stackLow()) return false;
    abandon(where);
    return true;
}

void Parser::abandon(krBlock* where) {
    // Nesting this deep cannot be parsed or run safely: report once and drop the rest of the
    // text, which unwinds every level at the end of the text.
    report(where, "Script nested too deeply");
    abandoned = true;
    p += std::strlen(p);
}

std::string Parser::readWord() {
    const char* start = p;
    while (isWordChar(*p)) ++p;
    return std::string(start, p);
}

krBOperator* Parser::readOperator(krBlock* parent) {
    // Up to three operator characters, then the longest that is an operator.
    const char* start = p;
    size_t n = 0;
    while (n < 3 && isOperatorChar(p[n])) ++n;
    for (; n > 0; --n) {
        if (const krOperatorInfo* row = krFindOperator(std::string_view(start, n))) {
            krBOperator* op = row->make(parent);
            p = start + n;
            op->setLine(line);
            return op;
        }
    }
    p = start + 1;
    report(parent, "Invalid operator: " + std::string(start, 1));
    return nullptr;
}

krBlock* Parser::makeLiteral(krBlock* parent, krVariant* value) {
    auto* node = new krBConst(parent, value);
    node->setLine(line);
    return node;
}

krBlock* Parser::fold(krBlock* node) {
    if (!node || !node->isConst()) return node;
    krVariant* value = node->eval();
    krBlock* parent = node->getParent();
    const int32_t at = node->getLine();
    delete node;
    auto* folded = new krBConst(parent, value);
    folded->setLine(at);
    return folded;
}

krBlock* Parser::buildTree(std::vector<Slot>& slots, size_t lo, size_t hi) {
    if (lo == hi && slots[lo].op) {
        report(slots[lo].op, "Invalid operation");
        delete slots[lo].op;
        slots[lo].op = nullptr;
        return nullptr;
    }
    int best = 0;
    size_t chosen = hi + 1;
    for (size_t i = hi + 1; i-- > lo;) {
        krBOperator* op = slots[i].op;
        if (!op) continue;
        const krOperatorInfo& row = op->info();
        if (row.level > best || (row.level == best && row.groupsRight)) {
            best = row.level;
            chosen = i;
        }
    }
    if (chosen > hi) {
        // Operands without operators between them: the first one stands, the rest go.
        for (size_t i = lo + 1; i <= hi; ++i) {
            delete slots[i].operand;
            slots[i].operand = nullptr;
        }
        krBlock* result = slots[lo].operand;
        slots[lo].operand = nullptr;
        return result;
    }
    krBOperator* op = slots[chosen].op;
    slots[chosen].op = nullptr;
    if (chosen > lo) {
        krBlock* l = buildTree(slots, lo, chosen - 1);
        if (l) l->setParent(op);
        op->setLeft(l);
    }
    if (chosen < hi) {
        krBlock* r = buildTree(slots, chosen + 1, hi);
        if (r) r->setParent(op);
        op->setRight(r);
    }
    return fold(op);
}

krBlock* Parser::parseExpression(krBlock* parent, const char* terminators) {
    if (tooDeep(parent)) return nullptr;
    std::vector<Slot> slots;
    bool lastIsOperand = false;
    bool overflowReported = false;
    auto push = [&](Slot s) {
        // Entries beyond the limit are dropped, with one report.
        if (slots.size() < krParser::maxExpressionSlots) {
            slots.push_back(s);
            return;
        }
        if (!overflowReported) report(parent, "Expression too long");
        overflowReported = true;
        delete s.operand;
        delete s.op;
    };

    // Member and index links on the last operand: the parser follows them in a loop, but every
    // later walk of the tree recurses once per link.
    size_t links = 0;
    skip();
    while (*p) {
        const char c = *p;
        if (isOperatorChar(c)) {
            if (krBOperator* op = readOperator(parent)) push(Slot{nullptr, op});
            lastIsOperand = false;
            skip();
            continue;
        }
        if (std::strchr(terminators, c)) break;
        if (lastIsOperand && !slots.empty()) {
            Slot& last = slots.back();
            if (c == '.' || c == '[') {
                if (++links > krParser::maxChainLinks) {
                    abandon(parent);
                    break;
                }
                last.operand = c == '.' ? parseMember(parent, last.operand) : parseIndex(parent, last.operand);
                if (!last.operand) {
                    slots.pop_back();
                    lastIsOperand = false;
                }
                skip();
                continue;
            }
            report(parent, std::string("Operator or ") + terminators + " expected but " + charText(c) + " found");
            delete last.operand;
            slots.pop_back();
            lastIsOperand = false;
        }
        Statement statement;
        krBlock* operand = parseOperand(parent, terminators, statement);
        if (operand) {
            push(Slot{operand, nullptr});
            lastIsOperand = true;
            links = 0;
            if (statement.blockEnd) {
                // Step back, so that the caller's consuming of a terminator lands behind it.
                --p;
                break;
            }
        }
        skip();
    }

    if (slots.empty()) return nullptr;
    if (slots.size() == 1) {
        if (slots[0].op) {
            report(slots[0].op, "Invalid operation");
            delete slots[0].op;
            return nullptr;
        }
        return slots[0].operand;
    }
    krBlock* root = buildTree(slots, 0, slots.size() - 1);
    if (root) root->setParent(parent);
    return root;
}

krBlock* Parser::parseOperand(krBlock* parent, const char* terminators, Statement& statement) {
    const char c = *p;
    if (c == '(') {
        ++p;
        krBlock* inner = parseExpression(parent, ")");
        expect(parent, ')');
        return inner;
    }
    if (c == '$') return parseVariable(parent);
    if (isWordStart(c)) {
        std::string word = readWord();
        return parseWord(parent, word, statement);
    }
    if (c == '"' || c == '\'') return parseString(parent);
    if (isDigit(c)) return parseNumber(parent);
    if (c == '[') return parseArray(parent);
    if (c == '.') return parseMember(parent, nullptr);
    (void)terminators;
    report(parent, "Illegal character: " + charText(c));
    ++p;
    return nullptr;
}

krBlock* Parser::parseString(krBlock* parent) {
    const char quote = *p++;
    const char* start = p;
    while (*p && *p != quote) ++p;
    std::string text(start, p);
    if (*p) ++p;
    else report(parent, "Unterminated string");
    if (text.empty()) return makeLiteral(parent, sharedOrNew(shared.emptyString, new krVString(std::string())));
    return makeLiteral(parent, new krVString(std::move(text)));
}

krBlock* Parser::parseNumber(krBlock* parent) {
    const char* start = p;
    bool point = false;
    while (isDigit(*p) || *p == '.') {
        if (*p == '.') {
            if (point) {
                // The cursor stays on the second point.
                report(parent, "Invalid number");
                return nullptr;
            }
            point = true;
        }
        ++p;
    }
    const std::string text(start, p);
    if (!point) {
        const int32_t v = krConvert::stringToInt(text);
        if (v == 0) return makeLiteral(parent, sharedOrNew(shared.int0, new krVInt(0)));
        if (v == 1) return makeLiteral(parent, sharedOrNew(shared.int1, new krVInt(1)));
        return makeLiteral(parent, new krVInt(v));
    }
    const float f = krConvert::stringToFloat(text);
    if (f == 0) return makeLiteral(parent, sharedOrNew(shared.float0, new krVFloat(0)));
    if (f == 1) return makeLiteral(parent, sharedOrNew(shared.float1, new krVFloat(1)));
    return makeLiteral(parent, new krVFloat(f));
}

krBlock* Parser::parseArray(krBlock* parent) {
    ++p;
    auto* array = new krBConstArray(parent);
    array->setLine(line);
    skip();
    if (*p == ']') {
        ++p;
        return fold(array);
    }
    while (*p) {
        if (krBlock* element = parseExpression(array, ",]")) array->addArg(element);
        if (*p == ']') {
            ++p;
            break;
        }
        consumeOne();
    }
    return fold(array);
}

krBlock* Parser::parseVariable(krBlock* parent) {
    ++p;
    const std::string name = readWord();
    if (name == "_") {
        auto* node = new krBCurrent(parent);
        node->setLine(line);
        return node;
    }
    if (name.size() == 1 && isDigit(name[0])) {
        const size_t index = static_cast<size_t>(name[0] - '0');
        if (index >= parseArgs->size()) {
            report(parent, "Undefined variable: " + name);
            return nullptr;
        }
        auto* node = new krBConst(parent, (*parseArgs)[index]->addRef(), false);
        node->setLine(line);
        return node;
    }
    auto* node = new krBVar(parent, name);
    node->setLine(line);
    return node;
}

krBlock* Parser::parseMember(krBlock* parent, krBlock* left) {
    ++p;
    skip();
    if (!isWordStart(*p)) {
        report(parent, "Member name expected, but " + charText(*p) + " found");
        delete left;
        return nullptr;
    }
    std::string name = readWord();
    skip();
    if (!left) {
        auto* node = new krBCurrentKey(parent, std::move(name));
        node->setLine(line);
        if (*p == '(') parseArguments(node);
        return node;
    }
    auto* node = new krBKey(parent, std::move(name));
    node->setLine(line);
    left->setParent(node);
    node->setLeft(left);
    if (*p == '(') parseArguments(node);
    return fold(node);
}

krBlock* Parser::parseIndex(krBlock* parent, krBlock* left) {
    ++p;
    auto* node = new krBIndex(parent);
    node->setLine(line);
    if (left) left->setParent(node);
    node->setLeft(left);
    node->setIndex(parseExpression(node, "]"));
    expect(node, ']');
    return fold(node);
}

template <typename Node>
void Parser::parseArguments(Node* call) {
    ++p;
    skip();
    if (*p == ')') {
        ++p;
        return;
    }
    while (*p) {
        krBlock* arg = parseExpression(call, ",)");
        if (!arg) break;
        call->addArg(arg);
        if (*p == ')') {
            ++p;
            break;
        }
        consumeOne();
    }
}

void Parser::parseParams(krFunction* f) {
    skip();
    if (*p != '(') return;
    ++p;
    skip();
    while (*p && *p != ')') {
        if (*p != '$') {
            report(f, "Variable expected, but " + charText(*p) + " found");
            ++p;
            skip();
            continue;
        }
        ++p;
        f->addParam(readWord());
        skip();
        if (*p == ',') {
            ++p;
            skip();
        } else if (*p != ')') {
            // The next parameter is read from here.
            report(f, ", or ) expected, but " + charText(*p) + " found");
        }
    }
    if (*p == ')') ++p;
}

void Parser::parseBody(krMultiBlock* block) {
    skip();
    if (*p != '{') {
        block->addBlock(parseExpression(block, ";"));
        consumeOne();
        return;
    }
    ++p;
    skip();
    while (*p && *p != '}') {
        krBlock* statement = parseExpression(block, ";}");
        if (!statement) {
            if (*p != '}') expected(block, "}");
            break;
        }
        block->addBlock(statement);
        consumeOne();
        skip();
    }
    if (*p == '}') ++p;
}

krBlock* Parser::parseCondition(krBlock* node) {
    skip();
    if (!expect(node, '(')) return nullptr;
    krBlock* cond = parseExpression(node, ")");
    expect(node, ')');
    return cond;
}

krBIf* Parser::parseIf(krBlock* parent) {
    auto* node = new krBIf(parent);
    node->setLine(line);
    if (tooDeep(node)) return node;
    node->setCond(parseCondition(node));
    parseBody(node);
    skip();
    // "else" and "if" are matched as plain characters, whatever follows them.
    if (std::strncmp(p, "else", 4) == 0) {
        p += 4;
        skip();
        if (std::strncmp(p, "if", 2) == 0) {
            p += 2;
            node->setOtherwise(parseIf(node));
        } else {
            auto* otherwise = new krMultiBlock(node);
            otherwise->setLine(line);
            parseBody(otherwise);
            node->setOtherwise(otherwise);
        }
    }
    return node;
}

krFunction* Parser::newFunction(krBlock* parent) {
    // Functions belong to the script, whatever block they were written in.
    krScript* s = parent ? parent->getScript() : nullptr;
    auto* f = new krFunction(s);
    f->setLine(line);
    return f;
}

krBlock* Parser::parseWord(krBlock* parent, const std::string& word, Statement& statement) {
    if (word == "if") {
        statement.blockEnd = true;
        return parseIf(parent);
    }
    if (word == "with") {
        auto* node = new krBWith(parent);
        node->setLine(line);
        node->setExpr(parseCondition(node));
        parseBody(node);
        statement.blockEnd = true;
        return node;
    }
    if (word == "function") {
        skip();
        if (!isWordStart(*p)) {
            report(parent, "Function name expected, but " + charText(*p) + " found");
            return nullptr;
        }
        const std::string name = readWord();
        krFunction* f = newFunction(parent);
        parseParams(f);
        parseBody(f);
        if (krScript* s = f->getScript()) s->setFunction(name, f);
        else f->retire();
        return nullptr;
    }
    if (word == "event") {
        const int32_t at = line;
        krBlock* object = parseExpression(parent, ":");
        expect(parent, ':');
        skip();
        krBlock* nameExpr = nullptr;
        std::string name;
        if (*p == '{') {
            ++p;
            nameExpr = parseExpression(parent, "}");
            expect(parent, '}');
        } else if (isWordStart(*p)) {
            name = readWord();
        } else {
            report(parent, "Event name expected, but " + charText(*p) + " found");
        }
        krFunction* handler = newFunction(parent);
        parseParams(handler);
        parseBody(handler);
        statement.blockEnd = true;
        krScript* s = handler->getScript();
        if (!s) {
            handler->retire();
            delete object;
            delete nameExpr;
            return nullptr;
        }
        s->addEventFunction(handler);
        if (nameExpr) {
            auto* node = new krBDynEventInit(parent);
            node->setLine(at);
            if (object) object->setParent(node);
            nameExpr->setParent(node);
            node->setObject(object);
            node->setNameExpr(nameExpr);
            node->setHandler(handler);
            return node;
        }
        auto* node = new krBEventInit(parent);
        node->setLine(at);
        if (object) object->setParent(node);
        node->setObject(object);
        node->setName(name);
        node->setHandler(handler);
        return node;
    }
    if (word == "destructor") {
        krFunction* f = newFunction(parent);
        parseBody(f);
        if (krScript* s = f->getScript()) s->setDestructor(f);
        else f->retire();
        return nullptr;
    }
    if (word == "continue" || word == "break") {
        krBlock* node = word == "continue" ? static_cast<krBlock*>(new krBContinue(parent)) : new krBBreak(parent);
        node->setLine(line);
        skip();
        if (*p != ';') expected(node, ";");
        return node;
    }
    if (word == "return" || word == "exit") {
        krBReturn* node = word == "return" ? new krBReturn(parent) : new krBExit(parent);
        node->setLine(line);
        node->setValue(parseExpression(node, ";,)}"));
        return node;
    }
    if (word == "while") {
        auto* node = new krBWhile(parent);
        node->setLine(line);
        node->setCond(parseCondition(node));
        parseBody(node);
        statement.blockEnd = true;
        return node;
    }
    if (word == "for") {
        auto* node = new krBFor(parent);
        node->setLine(line);
        skip();
        if (expect(node, '(')) {
            node->setInit(parseExpression(node, ";"));
            expect(node, ';');
            node->setCond(parseExpression(node, ";"));
            expect(node, ';');
            node->setNext(parseExpression(node, ")"));
            expect(node, ')');
        }
        parseBody(node);
        statement.blockEnd = true;
        return node;
    }
    if (word == "foreach") {
        auto* node = new krBForeach(parent);
        node->setLine(line);
        node->setExpr(parseCondition(node));
        parseBody(node);
        statement.blockEnd = true;
        return node;
    }
    if (word == "global" || word == "local") {
        skip();
        if (*p != '$') {
            expected(parent, "$");
            return nullptr;
        }
        ++p;
        std::string name = readWord();
        krBlock* node = word == "global" ? static_cast<krBlock*>(new krBVarGlobal(parent, std::move(name)))
                                         : new krBVarLocal(parent, std::move(name));
        node->setLine(line);
        return node;
    }

    if (krVariant* constant = krSymbols::findConstant(word)) return makeLiteral(parent, constant->addRef());

    krBFuncCall* call;
    if (const krFunctionEntry* entry = krSymbols::findFunction(word)) {
        const bool foldable = (entry->flags & krFuncFoldable) != 0;
        if (entry->flags & krFuncExternal) call = new krBFuncCallExternal(parent, entry->external, foldable);
        else call = new krBFuncCallPtr(parent, entry->native, foldable);
    } else {
        call = new krBFuncCallStr(parent, word);
    }
    call->setLine(line);
    skip();
    if (*p == '(') {
        parseArguments(call);
    } else if (krBlock* arg = parseExpression(call, ";,)}]")) {
        // Without parentheses a call takes one argument, up to a terminator.
        call->addArg(arg);
    }
    return fold(call);
}

void Parser::parseFile(krMultiBlock* block) {
    for (;;) {
        krBlock* statement = parseExpression(block, ";");
        if (!statement) return;
        block->addBlock(statement);
        consumeOne();
    }
}

} // namespace

void krParser::parseFile(krMultiBlock* block, const char* text, int32_t line) {
    Parser parser(text, line);
    parser.parseFile(block);
}

krBlock* krParser::parseOne(krBlock* parent, const char* text, int32_t line) {
    Parser parser(text, line);
    return parser.parseExpression(parent, ";");
}

void krParser::setParseArgs(const krArgs* args) { parseArgs = args ? args : &emptyArgs; }

void krParser::releaseShared() {
    for (krVariant** v : {&shared.int0, &shared.int1, &shared.float0, &shared.float1, &shared.emptyString}) {
        if (*v) (*v)->release();
        *v = nullptr;
    }
}
