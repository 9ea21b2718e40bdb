// Operator nodes. There are no unary forms in the grammar: an operator with nothing on one side
// has just the other side, and each operator decides what one side means. The left operand's
// type decides how both are read: float, string, or else int.
#pragma once

#include <string_view>

#include "script/krBlock.h"

enum class krOp : uint8_t {
    defaultValue,
    notOp, binNot, increase, decrease, assignNot, assignBinNot,
    multiply, divide, remainder,
    add, subtract,
    shiftLeft, shiftRight,
    lower, lowerEqual, greater, greaterEqual,
    equal, notEqual,
    binAnd, binXor, binOr,
    andOp, xorOp, orOp,
    assign, assignAdd, assignSubtract, assignMultiply, assignDivide, assignRemainder,
    assignAnd, assignOr, assignXor, assignBinAnd, assignBinOr, assignBinXor,
    assignShiftLeft, assignShiftRight, assignDefaultValue,
};

class krBOperator;

// Everything the language says about one operator, in one row of one table (krBOperator.cpp).
struct krOperatorInfo {
    const char* text;
    krOp op;
    // Binding strength: a low level binds tighter.
    uint8_t level;
    bool groupsRight;
    // For a compound assignment the operator whose arithmetic it does in place; else itself.
    krOp plain;
    // For a compound assignment the bits (1 << type) of the left types it changes; else 0.
    uint16_t accepts;
    // Makes the node of this operator.
    krBOperator* (*make)(krBlock* parent);
};

class krBOperator : public krBlock {
public:
    explicit krBOperator(krBlock* parent) : krBlock(parent) {}
    ~krBOperator() override;
    bool isConst() override;
    virtual void setLeft(krBlock* l) { left = l; }
    virtual void setRight(krBlock* r) { right = r; }
    virtual const krOperatorInfo& info() const = 0;

    // A result the node itself may fill again: its last result when nobody else holds it any
    // more, so arithmetic in loops does not make a new value per step. The caller gets its own
    // reference as always; a result someone kept is simply left to them.
    krVariant* makeInt(int32_t v);
    krVariant* makeFloat(float v);
    krVariant* makeBool(bool v);
    krVariant* makeString(std::string&& v);

protected:
    // A temporary of this node cannot stand left of "=".
    bool ownsTemporary(krVariant* v) const override { return v == scratch; }

    krBlock* left = nullptr;
    krBlock* right = nullptr;

private:
    template <class T, krStorage S, typename V>
    krVariant* reuse(V&& v);
    krVariant* scratch = nullptr;
};

// The row of an operator.
const krOperatorInfo& krOperatorOf(krOp op);

// One node class per operator.
template <krOp O>
class krBOp final : public krBOperator {
public:
    explicit krBOp(krBlock* parent) : krBOperator(parent) {}
    krVariant* eval() override;
    const krOperatorInfo& info() const override { return krOperatorOf(O); }
};

// The row of the operator written `text`, or null for a text that is no operator.
const krOperatorInfo* krFindOperator(std::string_view text);
