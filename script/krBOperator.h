// Operator nodes. There are no unary forms in the grammar: an operator with nothing on one side
// has just the other side, and each operator decides what one side means. The left operand's
// type decides how both are read: float, string, or else int.
#pragma once

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

class krBOperator : public krBlock {
public:
    explicit krBOperator(krBlock* parent) : krBlock(parent) {}
    ~krBOperator() override;
    bool isConst() override;
    virtual void setLeft(krBlock* l) { left = l; }
    virtual void setRight(krBlock* r) { right = r; }
    // Binding strength: a low level binds tighter.
    virtual int level() const = 0;
    virtual bool groupsRight() const = 0;

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

template <krOp O>
class krBOp final : public krBOperator {
public:
    explicit krBOp(krBlock* parent) : krBOperator(parent) {}
    krVariant* eval() override;
    int level() const override;
    bool groupsRight() const override { return level() == 14; }
};

using krBDefaultValue = krBOp<krOp::defaultValue>;
using krBNot = krBOp<krOp::notOp>;
using krBBinNot = krBOp<krOp::binNot>;
using krBIncrease = krBOp<krOp::increase>;
using krBDecrease = krBOp<krOp::decrease>;
using krBAssignNot = krBOp<krOp::assignNot>;
using krBAssignBinNot = krBOp<krOp::assignBinNot>;
using krBMultiply = krBOp<krOp::multiply>;
using krBDivide = krBOp<krOp::divide>;
using krBRemainder = krBOp<krOp::remainder>;
using krBAdd = krBOp<krOp::add>;
using krBSubtract = krBOp<krOp::subtract>;
using krBShiftLeft = krBOp<krOp::shiftLeft>;
using krBShiftRight = krBOp<krOp::shiftRight>;
using krBLower = krBOp<krOp::lower>;
using krBLowerEqual = krBOp<krOp::lowerEqual>;
using krBGreater = krBOp<krOp::greater>;
using krBGreaterEqual = krBOp<krOp::greaterEqual>;
using krBEqual = krBOp<krOp::equal>;
using krBNotEqual = krBOp<krOp::notEqual>;
using krBBinAnd = krBOp<krOp::binAnd>;
using krBBinXor = krBOp<krOp::binXor>;
using krBBinOr = krBOp<krOp::binOr>;
using krBAnd = krBOp<krOp::andOp>;
using krBXor = krBOp<krOp::xorOp>;
using krBOr = krBOp<krOp::orOp>;
using krBAssign = krBOp<krOp::assign>;
using krBAssignAdd = krBOp<krOp::assignAdd>;
using krBAssignSubtract = krBOp<krOp::assignSubtract>;
using krBAssignMultiply = krBOp<krOp::assignMultiply>;
using krBAssignDivide = krBOp<krOp::assignDivide>;
using krBAssignRemainder = krBOp<krOp::assignRemainder>;
using krBAssignAnd = krBOp<krOp::assignAnd>;
using krBAssignOr = krBOp<krOp::assignOr>;
using krBAssignXor = krBOp<krOp::assignXor>;
using krBAssignBinAnd = krBOp<krOp::assignBinAnd>;
using krBAssignBinOr = krBOp<krOp::assignBinOr>;
using krBAssignBinXor = krBOp<krOp::assignBinXor>;
using krBAssignShiftLeft = krBOp<krOp::assignShiftLeft>;
using krBAssignShiftRight = krBOp<krOp::assignShiftRight>;
using krBAssignDefaultValue = krBOp<krOp::assignDefaultValue>;

// Makes the node of an operator; null for a text that is no operator.
krBOperator* krMakeOperator(const std::string& text, krBlock* parent);
