// Operator evaluation. Integer arithmetic wraps (two's complement) instead of overflowing, shift
// counts are taken modulo 32, and no division traps. Operators that change a value in place work
// on a fresh copy when the value is a frozen constant, so a script can never change a constant.
#include "script/krBOperator.h"

#include <cmath>

namespace {

int32_t wrapAdd(int32_t a, int32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b)); }
int32_t wrapSub(int32_t a, int32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)); }
int32_t wrapMul(int32_t a, int32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b)); }

// The integer forms of the arithmetic and bit operators; false after a reported division by zero.
bool intArith(krOp op, int32_t x, int32_t y, int32_t& out, const krBlock* where) {
    switch (op) {
    case krOp::add: out = wrapAdd(x, y); return true;
    case krOp::subtract: out = wrapSub(x, y); return true;
    case krOp::multiply: out = wrapMul(x, y); return true;
    case krOp::divide:
    case krOp::remainder:
        if (y == 0) {
            reportError(where, "Division by zero");
            return false;
        }
        // INT32_MIN / -1 does not fit: it wraps to itself, and its remainder is 0.
        if (y == -1) out = op == krOp::divide ? wrapSub(0, x) : 0;
        else out = op == krOp::divide ? x / y : x % y;
        return true;
    case krOp::binAnd: out = x & y; return true;
    case krOp::binOr: out = x | y; return true;
    case krOp::binXor: out = x ^ y; return true;
    case krOp::shiftLeft: out = static_cast<int32_t>(static_cast<uint32_t>(x) << (y & 31)); return true;
    case krOp::shiftRight: out = x >> (y & 31); return true;
    default: return false;
    }
}

bool floatArith(krOp op, float x, float y, float& out, const krBlock* where) {
    switch (op) {
    case krOp::add: out = x + y; return true;
    case krOp::subtract: out = x - y; return true;
    case krOp::multiply: out = x * y; return true;
    case krOp::divide:
    case krOp::remainder:
        if (y == 0) {
            reportError(where, "Division by zero");
            return false;
        }
        // The remainder takes the sign of the divisor.
        out = op == krOp::divide ? x / y : x - std::floor(x / y) * y;
        return true;
    default: return false;
    }
}

// A new value of `a op b`, read by the type of `a`; null after a report.
krVariant* arithmetic(krOp op, krVariant* a, krVariant* b, const krBlock* where) {
    const int t = a->type();
    if (t == krTypeFloat) {
        float out;
        return floatArith(op, a->toFloat(), b->toFloat(), out, where) ? new krVFloat(out) : nullptr;
    }
    if (t == krTypeString && op == krOp::add) {
        std::string text = a->toString();
        const std::string tail = b->toString();
        if (text.size() + tail.size() > krConvert::maxStringBytes) return reportError(where, "String too long");
        return new krVString(text + tail);
    }
    int32_t out;
    return intArith(op, a->toInt(), b->toInt(), out, where) ? new krVInt(out) : nullptr;
}

bool compare(krOp op, krVariant* a, krVariant* b) {
    const int t = a->type();
    const bool equality = op == krOp::equal || op == krOp::notEqual;
    int order;
    if (t == krTypeFloat) {
        const float x = a->toFloat(), y = b->toFloat();
        if (equality) return (x == y) == (op == krOp::equal);
        order = x < y ? -1 : (x > y ? 1 : 0);
        // NaN is neither lower nor greater nor equal.
        if (order == 0 && x != y) return false;
    } else if (t == krTypeBool && equality) {
        return (a->toBool() == b->toBool()) == (op == krOp::equal);
    } else if (t == krTypeString) {
        order = a->toString().compare(b->toString());
    } else {
        const int32_t x = a->toInt(), y = b->toInt();
        order = x < y ? -1 : (x > y ? 1 : 0);
    }
    switch (op) {
    case krOp::equal: return order == 0;
    case krOp::notEqual: return order != 0;
    case krOp::lower: return order < 0;
    case krOp::lowerEqual: return order <= 0;
    case krOp::greater: return order > 0;
    default: return order >= 0;
    }
}

// The plain operator behind a compound assignment.
constexpr krOp plainOf(krOp op) {
    switch (op) {
    case krOp::assignAdd: return krOp::add;
    case krOp::assignSubtract: return krOp::subtract;
    case krOp::assignMultiply: return krOp::multiply;
    case krOp::assignDivide: return krOp::divide;
    case krOp::assignRemainder: return krOp::remainder;
    case krOp::assignBinAnd: return krOp::binAnd;
    case krOp::assignBinOr: return krOp::binOr;
    case krOp::assignBinXor: return krOp::binXor;
    case krOp::assignShiftLeft: return krOp::shiftLeft;
    case krOp::assignShiftRight: return krOp::shiftRight;
    case krOp::assignAnd: return krOp::andOp;
    case krOp::assignOr: return krOp::orOp;
    default: return krOp::xorOp;
    }
}

const char* compoundText(krOp op) {
    switch (op) {
    case krOp::assignAdd: return "+=";
    case krOp::assignSubtract: return "-=";
    case krOp::assignMultiply: return "*=";
    case krOp::assignDivide: return "/=";
    case krOp::assignRemainder: return "%=";
    case krOp::assignAnd: return "&&=";
    case krOp::assignOr: return "||=";
    case krOp::assignXor: return "^^=";
    case krOp::assignBinAnd: return "&=";
    case krOp::assignBinOr: return "|=";
    case krOp::assignBinXor: return "^=";
    case krOp::assignShiftLeft: return "<<=";
    default: return ">>=";
    }
}

// Whether a compound assignment accepts a left value of type `t`.
bool compoundAccepts(krOp op, int t) {
    switch (op) {
    case krOp::assignAdd: return t == krTypeInt || t == krTypeFloat || t == krTypeString;
    case krOp::assignSubtract:
    case krOp::assignMultiply:
    case krOp::assignDivide:
    case krOp::assignRemainder: return t == krTypeInt || t == krTypeFloat;
    case krOp::assignAnd:
    case krOp::assignOr:
    case krOp::assignXor: return t == krTypeBool;
    default: return t == krTypeInt;
    }
}

// Changes `target` in place by `op` with `operand`; a frozen target is left alone and the result
// comes back as a new value instead. Returns the value that stands for the result (one reference
// for the caller, the target's own reference passed on) or null after a report.
krVariant* compound(krOp op, krVariant* target, krVariant* operand, krBlock* side, const krBlock* where) {
    const int t = target->type();
    if (!compoundAccepts(op, t)) {
        reportError(where, std::string("Operator ") + compoundText(op) + " undefined for this type");
        return target;
    }
    const krOp plain = plainOf(op);
    krVariant* out = target;
    const bool copied = target->isFrozen();
    if (copied) {
        out = target->clone();
        target->release();
    }
    if (t == krTypeBool) {
        const bool was = out->toBool(), with = operand->toBool();
        if (plain == krOp::andOp) out->setBool(was && with);
        else if (plain == krOp::orOp) out->setBool(was || with);
        else out->setBool(was != with);
    } else if (t == krTypeString) {
        const std::string tail = operand->toString();
        if (out->textLength() + tail.size() > krConvert::maxStringBytes) reportError(where, "String too long");
        else out->appendString(tail);
    } else if (t == krTypeFloat) {
        float f;
        if (floatArith(plain, out->toFloat(), operand->toFloat(), f, where)) out->setFloat(f);
    } else {
        int32_t i;
        if (intArith(plain, out->toInt(), operand->toInt(), i, where)) out->setInt(i);
    }
    if (copied) side->adoptCopy(out);
    return out;
}

constexpr int levelOf(krOp op) {
    switch (op) {
    case krOp::defaultValue: return 1;
    case krOp::notOp: case krOp::binNot: case krOp::increase: case krOp::decrease:
    case krOp::assignNot: case krOp::assignBinNot: return 2;
    case krOp::multiply: case krOp::divide: case krOp::remainder: return 3;
    case krOp::add: case krOp::subtract: return 4;
    case krOp::shiftLeft: case krOp::shiftRight: return 5;
    case krOp::lower: case krOp::lowerEqual: case krOp::greater: case krOp::greaterEqual: return 6;
    case krOp::equal: case krOp::notEqual: return 7;
    case krOp::binAnd: return 8;
    case krOp::binXor: return 9;
    case krOp::binOr: return 10;
    case krOp::andOp: return 11;
    case krOp::xorOp: return 12;
    case krOp::orOp: return 13;
    default: return 14;
    }
}

// Evaluates both sides in the given order; null (with both released) if either is missing or null.
bool evalBoth(krBlock* left, krBlock* right, bool rightFirst, krVariant*& a, krVariant*& b) {
    a = b = nullptr;
    if (!left || !right) return false;
    krBlock* first = rightFirst ? right : left;
    krBlock* second = rightFirst ? left : right;
    krVariant* x = first->eval();
    if (!x) return false;
    krVariant* y = second->eval();
    if (!y) {
        x->release();
        return false;
    }
    a = rightFirst ? y : x;
    b = rightFirst ? x : y;
    return true;
}

} // namespace

krBOperator::~krBOperator() {
    delete left;
    delete right;
}

bool krBOperator::isConst() {
    return (!left || left->isConst()) && (!right || right->isConst());
}

template <krOp O>
int krBOp<O>::level() const {
    return levelOf(O);
}

template <krOp O>
krVariant* krBOp<O>::eval() {
    krVariant* a;
    krVariant* b;
    if constexpr (O == krOp::add || O == krOp::subtract) {
        if (!left) {
            if (!right) return nullptr;
            krVariant* v = right->eval();
            if (!v || O == krOp::add) return v;
            krVariant* negated = v->type() == krTypeFloat ? static_cast<krVariant*>(new krVFloat(-v->toFloat()))
                                                          : new krVInt(wrapSub(0, v->toInt()));
            v->release();
            return negated;
        }
        if (!evalBoth(left, right, true, a, b)) return nullptr;
        krVariant* result = arithmetic(O, a, b, this);
        a->release();
        b->release();
        return result;
    } else if constexpr (O == krOp::multiply || O == krOp::divide || O == krOp::remainder ||
                         O == krOp::binAnd || O == krOp::binOr || O == krOp::binXor ||
                         O == krOp::shiftLeft || O == krOp::shiftRight) {
        if (!evalBoth(left, right, false, a, b)) return nullptr;
        krVariant* result;
        if constexpr (O == krOp::multiply || O == krOp::divide || O == krOp::remainder) {
            result = arithmetic(O, a, b, this);
        } else {
            int32_t out = 0;
            intArith(O, a->toInt(), b->toInt(), out, this);
            result = new krVInt(out);
        }
        a->release();
        b->release();
        return result;
    } else if constexpr (O == krOp::lower || O == krOp::lowerEqual || O == krOp::greater ||
                         O == krOp::greaterEqual || O == krOp::equal || O == krOp::notEqual) {
        if (!evalBoth(left, right, false, a, b)) return nullptr;
        krVariant* result = new krVBool(compare(O, a, b));
        a->release();
        b->release();
        return result;
    } else if constexpr (O == krOp::xorOp) {
        if (!evalBoth(left, right, false, a, b)) return nullptr;
        krVariant* result = new krVBool(a->toBool() != b->toBool());
        a->release();
        b->release();
        return result;
    } else if constexpr (O == krOp::andOp || O == krOp::orOp || O == krOp::defaultValue) {
        // The right side runs only when the left does not decide.
        if (!left || !right) return nullptr;
        krVariant* v = left->eval();
        if constexpr (O == krOp::defaultValue) {
            return v ? v : right->eval();
        } else {
            if (!v) return nullptr;
            if (v->toBool() == (O == krOp::orOp)) return v;
            v->release();
            return right->eval();
        }
    } else if constexpr (O == krOp::notOp || O == krOp::binNot) {
        if (!right) return nullptr;
        krVariant* v = right->eval();
        if (!v) return nullptr;
        krVariant* result = O == krOp::notOp ? static_cast<krVariant*>(new krVBool(!v->toBool()))
                                             : new krVInt(~v->toInt());
        v->release();
        return result;
    } else if constexpr (O == krOp::increase || O == krOp::decrease || O == krOp::assignNot ||
                         O == krOp::assignBinNot) {
        // With the operand on the left it is the postfix form: the old value comes back.
        const bool postfix = left != nullptr;
        krBlock* side = postfix ? left : right;
        if (!side) return nullptr;
        krVariant* v = side->eval();
        if (!v) return nullptr;
        constexpr int kind = (O == krOp::assignNot) ? krTypeBool : krTypeInt;
        const bool changes = v->type() == kind;
        krVariant* oldValue = nullptr;
        if (postfix) {
            if constexpr (O == krOp::assignNot) oldValue = new krVBool(v->toBool());
            else if constexpr (O == krOp::assignBinNot) oldValue = new krVBool(v->toInt() != 0);
            else oldValue = new krVInt(v->toInt());
        }
        if (changes) {
            const bool copied = v->isFrozen();
            if (copied) {
                krVariant* copy = v->clone();
                v->release();
                v = copy;
            }
            if constexpr (O == krOp::increase) v->setInt(wrapAdd(v->toInt(), 1));
            else if constexpr (O == krOp::decrease) v->setInt(wrapSub(v->toInt(), 1));
            else if constexpr (O == krOp::assignNot) v->setBool(!v->toBool());
            else v->setInt(~v->toInt());
            if (copied) side->adoptCopy(v);
        }
        if (postfix) {
            v->release();
            return oldValue;
        }
        return v;
    } else if constexpr (O == krOp::assign) {
        if (!left || !right) return nullptr;
        krVariant* v = right->eval();
        if (v) left->assign(v);
        return v;
    } else if constexpr (O == krOp::assignDefaultValue) {
        if (!left || !right) return nullptr;
        krVariant* v = left->eval();
        if (v) return v;
        v = right->eval();
        if (v) left->assign(v);
        return v;
    } else {
        if (!evalBoth(left, right, false, a, b)) return nullptr;
        krVariant* result = compound(O, a, b, left, this);
        b->release();
        return result;
    }
}

template class krBOp<krOp::defaultValue>;
template class krBOp<krOp::notOp>;
template class krBOp<krOp::binNot>;
template class krBOp<krOp::increase>;
template class krBOp<krOp::decrease>;
template class krBOp<krOp::assignNot>;
template class krBOp<krOp::assignBinNot>;
template class krBOp<krOp::multiply>;
template class krBOp<krOp::divide>;
template class krBOp<krOp::remainder>;
template class krBOp<krOp::add>;
template class krBOp<krOp::subtract>;
template class krBOp<krOp::shiftLeft>;
template class krBOp<krOp::shiftRight>;
template class krBOp<krOp::lower>;
template class krBOp<krOp::lowerEqual>;
template class krBOp<krOp::greater>;
template class krBOp<krOp::greaterEqual>;
template class krBOp<krOp::equal>;
template class krBOp<krOp::notEqual>;
template class krBOp<krOp::binAnd>;
template class krBOp<krOp::binXor>;
template class krBOp<krOp::binOr>;
template class krBOp<krOp::andOp>;
template class krBOp<krOp::xorOp>;
template class krBOp<krOp::orOp>;
template class krBOp<krOp::assign>;
template class krBOp<krOp::assignAdd>;
template class krBOp<krOp::assignSubtract>;
template class krBOp<krOp::assignMultiply>;
template class krBOp<krOp::assignDivide>;
template class krBOp<krOp::assignRemainder>;
template class krBOp<krOp::assignAnd>;
template class krBOp<krOp::assignOr>;
template class krBOp<krOp::assignXor>;
template class krBOp<krOp::assignBinAnd>;
template class krBOp<krOp::assignBinOr>;
template class krBOp<krOp::assignBinXor>;
template class krBOp<krOp::assignShiftLeft>;
template class krBOp<krOp::assignShiftRight>;
template class krBOp<krOp::assignDefaultValue>;

namespace {
struct OperatorText {
    const char* text;
    krBOperator* (*make)(krBlock*);
};

template <krOp O>
krBOperator* makeOp(krBlock* parent) {
    return new krBOp<O>(parent);
}

const OperatorText operatorTable[] = {
    {"?", makeOp<krOp::defaultValue>}, {"!", makeOp<krOp::notOp>}, {"~", makeOp<krOp::binNot>},
    {"++", makeOp<krOp::increase>}, {"--", makeOp<krOp::decrease>}, {"!!", makeOp<krOp::assignNot>},
    {"~~", makeOp<krOp::assignBinNot>}, {"*", makeOp<krOp::multiply>}, {"/", makeOp<krOp::divide>},
    {"%", makeOp<krOp::remainder>}, {"+", makeOp<krOp::add>}, {"-", makeOp<krOp::subtract>},
    {"<<", makeOp<krOp::shiftLeft>}, {">>", makeOp<krOp::shiftRight>}, {"<", makeOp<krOp::lower>},
    {"<=", makeOp<krOp::lowerEqual>}, {">", makeOp<krOp::greater>}, {">=", makeOp<krOp::greaterEqual>},
    {"==", makeOp<krOp::equal>}, {"!=", makeOp<krOp::notEqual>}, {"&", makeOp<krOp::binAnd>},
    {"^", makeOp<krOp::binXor>}, {"|", makeOp<krOp::binOr>}, {"&&", makeOp<krOp::andOp>},
    {"^^", makeOp<krOp::xorOp>}, {"||", makeOp<krOp::orOp>}, {"=", makeOp<krOp::assign>},
    {"+=", makeOp<krOp::assignAdd>}, {"-=", makeOp<krOp::assignSubtract>},
    {"*=", makeOp<krOp::assignMultiply>}, {"/=", makeOp<krOp::assignDivide>},
    {"%=", makeOp<krOp::assignRemainder>}, {"&&=", makeOp<krOp::assignAnd>},
    {"||=", makeOp<krOp::assignOr>}, {"^^=", makeOp<krOp::assignXor>}, {"&=", makeOp<krOp::assignBinAnd>},
    {"|=", makeOp<krOp::assignBinOr>}, {"^=", makeOp<krOp::assignBinXor>},
    {"<<=", makeOp<krOp::assignShiftLeft>}, {">>=", makeOp<krOp::assignShiftRight>},
    {"?=", makeOp<krOp::assignDefaultValue>},
};
}

krBOperator* krMakeOperator(const std::string& text, krBlock* parent) {
    for (const OperatorText& op : operatorTable)
        if (text == op.text) return op.make(parent);
    return nullptr;
}
