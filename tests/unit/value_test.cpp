// Script values: the assignment rule, bound values, frozen constants, stale object handles,
// iterations that survive changes to their array, macros shared between holders, and the
// float text form.
#include <gtest/gtest.h>

#include "core/krModule.h"
#include "script/krVArray.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

TEST(Values, ShareAdoptsAnUnsharedValueAndClonesASharedOne) {
    const int32_t before = krVariant::instanceCount;
    auto* fresh = new krVInt(5);
    krVariant* adopted = fresh->share();
    EXPECT_EQ(adopted, fresh);
    EXPECT_EQ(fresh->getRefCount(), 2);
    fresh->release();  // the producer's reference; the adopter keeps the value alone
    krVariant* copy = adopted->share();
    EXPECT_EQ(copy, adopted) << "a value held once is adopted again";
    adopted->addRef();
    krVariant* clone = adopted->share();
    EXPECT_NE(clone, adopted);
    EXPECT_EQ(clone->toInt(), 5);
    clone->release();
    adopted->release();
    adopted->release();
    adopted->release();
    EXPECT_EQ(krVariant::instanceCount, before);
}

TEST(Values, BoundValueFollowsItsFieldUntilCopied) {
    float speed = 1.5f;
    auto* bound = new krVFloatPtr(&speed);
    krVariant* held = bound->share();  // a new variable takes the bound value itself
    EXPECT_EQ(held, bound);
    bound->release();
    held->setFloat(4.0f);
    EXPECT_EQ(speed, 4.0f) << "writes go through to the field";
    held->addRef();
    krVariant* detached = held->share();  // a second holder makes a plain copy
    EXPECT_NE(detached, held);
    detached->setFloat(9.0f);
    EXPECT_EQ(speed, 4.0f) << "a copy is detached from the field";
    speed = 2.0f;
    EXPECT_EQ(held->toFloat(), 2.0f);
    EXPECT_EQ(detached->toFloat(), 9.0f);
    detached->release();
    held->release();
    held->reset();
    EXPECT_EQ(held->toFloat(), 0.0f) << "reset forgets the field";
    held->setFloat(7.0f);
    EXPECT_EQ(speed, 2.0f);
    held->release();
}

TEST(Values, BoundValueOfADeadObjectReadsAsNull) {
    auto* owner = new krModule(nullptr);
    std::string field = "text";
    auto* bound = new krVStringPtr(&field, owner);
    EXPECT_EQ(bound->toString(), "text");
    owner->release();
    EXPECT_EQ(bound->toString(), "");
    EXPECT_EQ(bound->toLiteral(), "0");
    bound->setString("ignored");
    EXPECT_EQ(field, "text");
    bound->release();
}

TEST(Values, FrozenValuesNeverChange) {
    auto* constant = new krVInt(1);
    constant->freeze();
    constant->setInt(5);
    constant->assign(constant);
    EXPECT_EQ(constant->toInt(), 1);
    krVariant* copy = constant->share();
    EXPECT_NE(copy, constant) << "nobody comes to own a constant, even its last holder";
    copy->setInt(5);
    EXPECT_EQ(copy->toInt(), 5);
    copy->release();

    auto* array = new krVArray();
    array->append(new krVInt(1));
    array->freeze();
    array->setIndex("1", constant);
    array->reset();
    EXPECT_EQ(array->count(), 1);
    krVariant* element = array->getIndex("0");
    element->setInt(9);
    EXPECT_EQ(element->toInt(), 1) << "the elements of a frozen array are frozen too";
    element->release();
    array->release();
    constant->release();

    auto* globals = new krVMutableArray();
    globals->freeze();
    auto* v = new krVInt(3);
    globals->setIndex("key", v);
    v->release();
    EXPECT_EQ(globals->count(), 1) << "the shared global array takes elements though frozen";
    globals->reset();
    EXPECT_EQ(globals->count(), 1);
    globals->release();
}

TEST(Values, StaleObjectHandleReadsAsNull) {
    auto* module = new krModule(nullptr);
    auto* value = new krVObject(module);
    const int32_t handle = value->toInt();
    EXPECT_NE(handle, 0);
    EXPECT_TRUE(value->toBool());
    module->release();
    EXPECT_FALSE(value->toBool());
    EXPECT_EQ(value->toInt(), 0);
    EXPECT_EQ(value->getMember("class", nullptr, krScriptObject::noArgs), nullptr);
    EXPECT_EQ(value->toString(), "");

    auto* next = new krModule(nullptr);
    auto* nextValue = new krVObject(next);
    EXPECT_NE(nextValue->toInt(), handle) << "handles are never handed out twice";
    EXPECT_EQ(krScriptObject::fromHandle(handle), nullptr);
    nextValue->release();
    next->release();
    value->release();
}

TEST(Values, ArrayKeysOrderByBytesAndIterationSurvivesChanges) {
    auto* array = new krVArray();
    for (int i = 0; i <= 10; ++i) array->append(new krVInt(i));
    std::string order;
    krIterState* state = array->iterBegin();
    while (krVariant* v = array->iterNext(state)) {
        order += v->toString() + ",";
        v->release();
    }
    EXPECT_EQ(order, "0,1,10,2,3,4,5,6,7,8,9,");
    EXPECT_EQ(state, nullptr);

    // Remove the element the iteration stands on next, then empty the array under it.
    state = array->iterBegin();
    krVariant* first = array->iterNext(state);
    EXPECT_EQ(first->toInt(), 0);
    first->release();
    auto* one = new krVInt(1);
    krVariant* result = array->getMember("remove", nullptr, {one});
    EXPECT_EQ(result, nullptr);
    one->release();
    krVariant* second = array->iterNext(state);
    EXPECT_EQ(second->toInt(), 10);
    second->release();
    array->reset();
    EXPECT_EQ(array->iterNext(state), nullptr);
    EXPECT_EQ(state, nullptr);

    // An iteration that outlives its array ends quietly.
    array->append(new krVInt(1));
    state = array->iterBegin();
    array->release();
    krVariant::iterFree(state);
    EXPECT_EQ(state, nullptr);
}

TEST(Values, ArrayAssignAndLiterals) {
    auto* array = new krVArray();
    array->append(new krVInt(1));
    array->append(new krVString("two"));
    array->append(new krVFloat(3.5f));
    EXPECT_EQ(array->toLiteral(), "[1, \"two\", 3.50]");
    EXPECT_EQ(array->toString(), "1two3.50");
    auto* text = new krVString("x");
    array->assign(text);
    EXPECT_EQ(array->count(), 0) << "a string assigned to an array empties it";
    text->release();
    array->release();
}

TEST(Values, FloatTextKeepsThreeDigitsAndRoundsTiesAway) {
    const struct {
        float value;
        const char* text;
    } cases[] = {
        {0.0f, "0.000000"}, {100.0f, "100"}, {1234.5f, "1235"}, {-1234.5f, "-1235"},
        {123.456f, "123"},  {12.5f, "12.5"}, {12.25f, "12.3"},  {5.25f, "5.25"},
        {0.5f, "0.500"},    {0.05f, "0.0500"}, {0.03125f, "0.0313"}, {999.96f, "1000"},
        {1e20f, "100000002004087734272"}, {-0.001f, "-0.00100"},
    };
    for (const auto& c : cases) EXPECT_EQ(krConvert::floatToString(c.value), c.text) << c.value;
}

TEST(Values, TextToNumbersReadsAPrefix) {
    EXPECT_EQ(krConvert::stringToInt(" 12abc"), 12);
    EXPECT_EQ(krConvert::stringToInt("-7"), -7);
    EXPECT_EQ(krConvert::stringToInt("abc"), 0);
    EXPECT_EQ(krConvert::stringToInt("99999999999"), INT32_MAX);
    EXPECT_EQ(krConvert::stringToInt("-99999999999"), INT32_MIN);
    EXPECT_FLOAT_EQ(krConvert::stringToFloat("2.5e1x"), 25.0f);
    EXPECT_FLOAT_EQ(krConvert::stringToFloat(".5"), 0.5f);
    EXPECT_EQ(krConvert::stringToFloat("e5"), 0.0f);
    EXPECT_EQ(krConvert::floatToInt(3e10f), INT32_MAX);
    EXPECT_EQ(krConvert::floatToInt(-3.9f), -3);
}

TEST(Values, MacroIsSharedAndResetForAll) {
    auto* macro = new krVMacro(nullptr);
    krVariant* second = macro->clone();
    EXPECT_EQ(second, macro);
    second->reset();
    EXPECT_EQ(macro->toString(), "");
    EXPECT_EQ(macro->toLiteral(), "0");
    second->release();
    macro->release();
}

} // namespace
