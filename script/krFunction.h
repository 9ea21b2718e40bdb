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
    // A call without arguments.
    krVariant* eval() override { return call(nullptr, nullptr); }
    virtual void addParam(const std::string& name);
    // One call: argument blocks are evaluated in the caller's context, values are referenced.
    krVariant* call(const std::vector<krBlock*>* blocks, const krArgs* values);

    // Who keeps a function: the script's table for a named function or the destructor; for an
    // event handler the statement that defines it and each binding it has, so that handlers of
    // text run by eval or include go once nothing can bind or run them any more. A call or an
    // event dispatch holds it meanwhile: it goes when nobody keeps or holds it.
    void keep() { ++keepers; }
    void drop();
    void hold() { ++holds; }
    void letGo();
    // The script gives the function up (replaced, or the script is destroyed): an orphaned function
    // no longer runs, and goes as soon as nobody keeps or holds it.
    void retire() {
        orphaned = true;
        drop();
    }
    void orphan() { orphaned = true; }
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
    int32_t keepers = 0;
    int32_t holds = 0;
    bool orphaned = false;

    void destroy();
};
