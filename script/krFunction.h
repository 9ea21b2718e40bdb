// krFunction: a script function or event handler. A call fills a new frame from the arguments by
// parameter position, runs the body, and pops the frame. Variables of a function live in slots of
// its frame layout, found once per name instead of at each access.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "script/krBlock.h"

// The names of a function's frame and their slot numbers. It grows when code parsed later
// (eval, include, macros) names a new variable in the function.
class krFrameLayout {
public:
    // Slot of `name`, made if `add` is set; -1 if absent and not made.
    int32_t slot(const std::string& name, bool add);
    int32_t size() const { return static_cast<int32_t>(names.size()); }

private:
    std::unordered_map<std::string, int32_t> index;
    std::vector<std::string> names;
};

class krFunction : public krMultiBlock {
public:
    explicit krFunction(krBlock* parent) : krMultiBlock(parent) {}

    krFrameLayout* frameLayout() override { return &layout; }
    // A call with the present argument blocks or values.
    krVariant* eval() override;
    virtual void addParam(const std::string& name);
    virtual void setArgBlocks(const std::vector<krBlock*>* blocks) {
        argBlocks = blocks;
        argValues = nullptr;
    }
    virtual void setArgValues(const krArgs* values) {
        argValues = values;
        argBlocks = nullptr;
    }
    // One call: argument blocks are evaluated in the caller's context, values are referenced.
    krVariant* call(const std::vector<krBlock*>* blocks, const krArgs* values);

    // A function may be replaced or its script destroyed while a call or an event dispatch still
    // holds it; it then stays in memory, orphaned, until the last holder lets go, and an orphaned
    // function no longer runs.
    void hold() { ++holds; }
    void letGo();
    // The owner gives the function up: destroyed now, or when the last holder lets go.
    void retire();
    bool isOrphaned() const { return orphaned; }

    size_t paramCount() const { return params.size(); }

    // Parameters up to this count are gathered on the stack during a call.
    static constexpr size_t maxInlineParams = 8;

private:
    ~krFunction() override = default;
    friend class krScript;

    std::vector<std::string> params;
    std::vector<int32_t> paramSlots;
    krFrameLayout layout;
    const std::vector<krBlock*>* argBlocks = nullptr;
    const krArgs* argValues = nullptr;
    int32_t holds = 0;
    bool orphaned = false;
};
