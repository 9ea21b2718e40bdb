// Operator evaluation. Integer arithmetic wraps (two's complement) instead of overflowing, shift
// counts are taken modulo 32, and no division traps. Operators that change a value in place work
// on a fresh copy when the value is a frozen constant, so a script can never change a constant.
#include "script/krBOperator.h"

#include <cmath>
#include <iterator>

namespace {

int32_t wrapAdd(int32_t a, int32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b)); }
int32_t wrapSub(int32_t a, int32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)); }
int32_t wrapMul(int32_t a, int32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b)); }

template <krOp O>
krBOperator* makeOp(krBlock* parent) {
    return new krBOp<O>(parent);
}

// Left types that compound assignments change in place.
constexpr uint16_t numbers = 1u << krTypeInt | 1u << krTypeFloat;
constexpr uint16_t ints = 1u << krTypeInt;
constexpr uint16_t bools = 1u << krTypeBool;
constexpr uint16_t texts = numbers | 1u << krTypeString;

#define KR_OPERATOR(text, op, level, plain, accepts) \
    krOperatorInfo { text, krOp::op, level, level == 14, krOp::plain, accepts, makeOp<krOp::op> }

// In the order of krOp. Level 14, the assignments, groups to the right; everything else to the left.
constexpr krOperatorInfo operators[] = {
    KR_OPERATOR("?", defaultValue, 1, defaultValue, 0),
    KR_OPERATOR("!", notOp, 2, notOp, 0),
    KR_OPERATOR("~", binNot, 2, binNot, 0),
    KR_OPERATOR("++", increase, 2, increase, 0),
    KR_OPERATOR("--", decrease, 2, decrease, 0),
    KR_OPERATOR("!!", assignNot, 2, assignNot, 0),
    KR_OPERATOR("~~", assignBinNot, 2, assignBinNot, 0),
    KR_OPERATOR("*", multiply, 3, multiply, 0),
    KR_OPERATOR("/", divide, 3, divide, 0),
    KR_OPERATOR("%", remainder, 3, remainder, 0),
    KR_OPERATOR("+", add, 4, add, 0),
    KR_OPERATOR("-", subtract, 4, subtract, 0),
    KR_OPERATOR("<<", shiftLeft, 5, shiftLeft, 0),
    KR_OPERATOR(">>", shiftRight, 5, shiftRight, 0),
    KR_OPERATOR("<", lower, 6, lower, 0),
    KR_OPERATOR("<=", lowerEqual, 6, lowerEqual, 0),
    KR_OPERATOR(">", greater, 6, greater, 0),
    KR_OPERATOR(">=", greaterEqual, 6, greaterEqual, 0),
    KR_OPERATOR("==", equal, 7, equal, 0),
    KR_OPERATOR("!=", notEqual, 7, notEqual, 0),
    KR_OPERATOR("&", binAnd, 8, binAnd, 0),
    KR_OPERATOR("^", binXor, 9, binXor, 0),
    KR_OPERATOR("|", binOr, 10, binOr, 0),
    KR_OPERATOR("&&", andOp, 11, andOp, 0),
    KR_OPERATOR("^^", xorOp, 12, xorOp, 0),
    KR_OPERATOR("||", orOp, 13, orOp, 0),
    KR_OPERATOR("=", assign, 14, assign, 0),
    KR_OPERATOR("+=", assignAdd, 14, add, texts),
    KR_OPERATOR("-=", assignSubtract, 14, subtract, numbers),
    KR_OPERATOR("*=", assignMultiply, 14, multiply, numbers),
    KR_OPERATOR("/=", assignDivide, 14, divide, numbers),
    KR_OPERATOR("%=", assignRemainder, 14, remainder, numbers),
    KR_OPERATOR("&&=", assignAnd, 14, andOp, bools),
    KR_OPERATOR("||=", assignOr, 14, orOp, bools),
    KR_OPERATOR("^^=", assignXor, 14, xorOp, bools),
    KR_OPERATOR("&=", assignBinAnd, 14, binAnd, ints),
    KR_OPERATOR("|=", assignBinOr, 14, binOr, ints),
    KR_OPERATOR("^=", assignBinXor, 14, binXor, ints),
    KR_OPERATOR("<<=", assignShiftLeft, 14, shiftLeft, ints),
    KR_OPERATOR(">>=", assignShiftRight, 14, shiftRight, ints),
    KR_OPERATOR("?=", assignDefaultValue, 14, assignDefaultValue, 0),
};
#undef KR_OPERATOR

constexpr bool inOrder() {
    for (size_t i = 0; i < std::size(operators); ++i)
        if (static_cast<size_t>(operators[i].op) != i) return false;
    return true;
}
static_assert(inOrder(), "the operator table follows krOp");

// The integer forms of the arithmetic and bit operators; false after a reported division by zero.
template <krOp op>
inline bool intArith(int32_t x, int32_t y, int32_t& out, const krBlock* where) {
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

template <krOp op>
inline bool floatArith(float x, float y, float& out, const krBlock* where) {
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

// The value of `a op b` read by the type of `a`, written by `make` into a result of the node;
// null after a report.
template <krOp O, typename Node>
krVariant* arithmetic(Node* node, krVariant* a, krVariant* b) {
    if (a->storage() == krStorage::integer && b->storage() == krStorage::integer) {
        int32_t out;
        if (!intArith<O>(static_cast<krVInt*>(a)->raw(), static_cast<krVInt*>(b)->raw(), out, node)) return nullptr;
        return node->makeInt(out);
    }
    const int t = a->type();
    if (t == krTypeFloat) {
        float out;
        return floatArith<O>(a->toFloat(), b->toFloat(), out, node) ? node->makeFloat(out) : nullptr;
    }
    if (t == krTypeString && O == krOp::add) {
        std::string text = a->toString();
        const std::string tail = b->toString();
        if (text.size() + tail.size() > krConvert::maxStringBytes) return reportError(node, "String too long");
        text += tail;
        return node->makeString(std::move(text));
    }
    int32_t out;
    return intArith<O>(a->toInt(), b->toInt(), out, node) ? node->makeInt(out) : nullptr;
}

bool compareInts(krOp op, int32_t x, int32_t y) {
    switch (op) {
    case krOp::equal: return x == y;
    case krOp::notEqual: return x != y;
    case krOp::lower: return x < y;
    case krOp::lowerEqual: return x <= y;
    case krOp::greater: return x > y;
    default: return x >= y;
    }
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

// Changes `target` in place by `op` with `operand`; a frozen target is left alone and the result
// comes back as a new value instead. Returns the value that stands for the result (one reference
// for the caller, the target's own reference passed on) or null after a report.
template <krOp op>
krVariant* compound(krVariant* target, krVariant* operand, krBlock* side, const krBlock* where) {
    const int t = target->type();
    constexpr const krOperatorInfo& row = operators[static_cast<size_t>(op)];
    if (!(row.accepts & (1u << t))) {
        reportError(where, std::string("Operator ") + row.text + " undefined for this type");
        return target;
    }
    constexpr krOp plain = row.plain;
    if (t == krTypeInt && target->storage() == krStorage::integer && operand->storage() == krStorage::integer &&
        !target->isFrozen()) {
        int32_t& raw = static_cast<krVInt*>(target)->raw();
        int32_t i;
        if (intArith<plain>(raw, static_cast<krVInt*>(operand)->raw(), i, where)) raw = i;
        return target;
    }
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
        if (floatArith<plain>(out->toFloat(), operand->toFloat(), f, where)) out->setFloat(f);
    } else {
        int32_t i;
        if (intArith<plain>(out->toInt(), operand->toInt(), i, where)) out->setInt(i);
    }
    if (copied) side->adoptCopy(out);
    return out;
}

// Both sides of a binary operator, evaluated in the operator's order, each with a reference that
// goes when the operator is done.
struct Operands {
    krVariant* a = nullptr;
    krVariant* b = nullptr;

    ~Operands() {
        if (a) a->release();
        if (b) b->release();
    }
    // False (with nothing held) if a side is missing or has no value.
    bool evaluate(krBlock* left, krBlock* right, bool rightFirst) {
        if (!left || !right) return false;
        krVariant* x = (rightFirst ? right : left)->eval();
        if (!x) return false;
        krVariant* y = (rightFirst ? left : right)->eval();
        if (!y) {
            x->release();
            return false;
        }
        a = rightFirst ? y : x;
        b = rightFirst ? x : y;
        return true;
    }
    // The left value with its reference, for operators that hand it on.
    krVariant* takeA() {
        krVariant* v = a;
        a = nullptr;
        return v;
    }
};

} // namespace

krBOperator::~krBOperator() {
    delete left;
    delete right;
    if (scratch) scratch->release();
}

template <class T, krStorage S, typename V>
krVariant* krBOperator::reuse(V&& v) {
    if (scratch && scratch->getRefCount() == 1 && scratch->storage() == S) {
        static_cast<T*>(scratch)->raw() = std::forward<V>(v);
        return scratch->addRef();
    }
    // The old result is kept by someone (or of another kind): let it go and keep the new one.
    if (scratch) scratch->release();
    scratch = new T(std::forward<V>(v));
    return scratch->addRef();
}

krVariant* krBOperator::makeInt(int32_t v) { return reuse<krVInt, krStorage::integer>(v); }
krVariant* krBOperator::makeFloat(float v) { return reuse<krVFloat, krStorage::real>(v); }
krVariant* krBOperator::makeBool(bool v) { return reuse<krVBool, krStorage::boolean>(v); }
krVariant* krBOperator::makeString(std::string&& v) { return reuse<krVString, krStorage::text>(std::move(v)); }

bool krBOperator::isConst() {
    return (!left || krFixed(left)) && (!right || krFixed(right));
}

template <krOp O>
krVariant* krBOp<O>::eval() {
    if constexpr (O == krOp::add || O == krOp::subtract) {
        if (!left) {
            if (!right) return nullptr;
            krVariant* v = right->eval();
            if (!v || O == krOp::add) return v;
            krVariant* negated = v->type() == krTypeFloat ? makeFloat(-v->toFloat()) : makeInt(wrapSub(0, v->toInt()));
            v->release();
            return negated;
        }
        Operands ops;
        if (!ops.evaluate(left, right, true)) return nullptr;
        return arithmetic<O>(this, ops.a, ops.b);
    } else if constexpr (O == krOp::multiply || O == krOp::divide || O == krOp::remainder) {
        Operands ops;
        if (!ops.evaluate(left, right, false)) return nullptr;
        return arithmetic<O>(this, ops.a, ops.b);
    } else if constexpr (O == krOp::binAnd || O == krOp::binOr || O == krOp::binXor || O == krOp::shiftLeft ||
                         O == krOp::shiftRight) {
        Operands ops;
        if (!ops.evaluate(left, right, false)) return nullptr;
        int32_t out = 0;
        intArith<O>(ops.a->toInt(), ops.b->toInt(), out, this);
        return makeInt(out);
    } else if constexpr (O == krOp::lower || O == krOp::lowerEqual || O == krOp::greater ||
                         O == krOp::greaterEqual || O == krOp::equal || O == krOp::notEqual) {
        Operands ops;
        if (!ops.evaluate(left, right, false)) return nullptr;
        krVariant* a = ops.a;
        krVariant* b = ops.b;
        const bool truth = a->storage() == krStorage::integer && b->storage() == krStorage::integer
                               ? compareInts(O, static_cast<krVInt*>(a)->raw(), static_cast<krVInt*>(b)->raw())
                               : compare(O, a, b);
        return makeBool(truth);
    } else if constexpr (O == krOp::xorOp) {
        Operands ops;
        if (!ops.evaluate(left, right, false)) return nullptr;
        return makeBool(krTruth(ops.a) != krTruth(ops.b));
    } else if constexpr (O == krOp::andOp || O == krOp::orOp || O == krOp::defaultValue) {
        // The right side runs only when the left does not decide.
        if (!left || !right) return nullptr;
        krVariant* v = left->eval();
        if constexpr (O == krOp::defaultValue) {
            return v ? v : right->eval();
        } else {
            if (!v) return nullptr;
            if (krTruth(v) == (O == krOp::orOp)) return v;
            v->release();
            return right->eval();
        }
    } else if constexpr (O == krOp::notOp || O == krOp::binNot) {
        if (!right) return nullptr;
        krVariant* v = right->eval();
        if (!v) return nullptr;
        krVariant* result = O == krOp::notOp ? makeBool(!krTruth(v)) : makeInt(~v->toInt());
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
        krVariant* oldValue = nullptr;
        if (postfix) {
            if constexpr (O == krOp::assignNot) oldValue = makeBool(krTruth(v));
            else if constexpr (O == krOp::assignBinNot) oldValue = makeBool(v->toInt() != 0);
            else oldValue = makeInt(v->toInt());
        }
        if (v->type() == kind) {
            const bool copied = v->isFrozen();
            if (copied) {
                krVariant* copy = v->clone();
                v->release();
                v = copy;
            }
            if (v->storage() == krStorage::integer) {
                int32_t& raw = static_cast<krVInt*>(v)->raw();
                if constexpr (O == krOp::increase) raw = wrapAdd(raw, 1);
                else if constexpr (O == krOp::decrease) raw = wrapSub(raw, 1);
                else if constexpr (O == krOp::assignBinNot) raw = ~raw;
            } else {
                if constexpr (O == krOp::increase) v->setInt(wrapAdd(v->toInt(), 1));
                else if constexpr (O == krOp::decrease) v->setInt(wrapSub(v->toInt(), 1));
                else if constexpr (O == krOp::assignNot) v->setBool(!v->toBool());
                else v->setInt(~v->toInt());
            }
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
        Operands ops;
        if (!ops.evaluate(left, right, false)) return nullptr;
        return compound<O>(ops.takeA(), ops.b, left, this);
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

const krOperatorInfo& krOperatorOf(krOp op) { return operators[static_cast<size_t>(op)]; }

const krOperatorInfo* krFindOperator(std::string_view text) {
    for (const krOperatorInfo& row : operators)
        if (text == row.text) return &row;
    return nullptr;
}
