// The class tables against the ladders they describe: what a table lists as readable or callable
// is answered by the class itself on a fresh instance, and does not fall through to the event of
// that name. Also every function has its usage line and every table its known base.
#include <set>
#include <string>
#include <vector>

#include "engine_testing.h"
#include "script/krClassInfo.h"
#include "script/krSymbols.h"

namespace {

class ClassTables : public engineTesting::Engine {
public:
    krScript* runText(const std::string& text) { return run(text); }
    using engineTesting::Engine::scripts;
};

// How a script makes an instance without a display: the factory's call, where it needs more than
// an optional owner. A factory that makes nothing from its plain call must be given one here.
std::string makeExpression(const std::string& factory) {
    if (factory == "new_window") return "new_window(OPENGL)";
    if (factory == "timer") return "timer(1000)";
    return factory + "()";
}

// Instances that no factory makes, reached the way scripts reach them.
const char* const reachable[] = {"MAIN", "MAIN.child(0)", "new_window(OPENGL).video"};

// Calls that cannot run in a test: the reason stands beside each.
bool unsafe(const std::string& className, const std::string& member) {
    // Opens a real window where a display exists.
    if (className == "krWindow_OGL" && member == "init") return true;
    // Runs a frame of the whole tree, this test's scripts included.
    if (className == "krMain" && member == "move") return true;
    // Would run the first script again, or tear down the engine the test runs in.
    if ((className == "krMain" || className == "krScripting") && (member == "init" || member == "clear")) return true;
    return false;
}

// The arguments a method needs: those of "(a, b, c?)" without the optional and repeated ones.
size_t requiredArguments(const std::string& list) {
    size_t count = 0;
    std::string name;
    for (char c : list.substr(1)) {
        if (c == ',' || c == ')') {
            if (!name.empty() && name.back() != '?' && name.find("...") == std::string::npos) ++count;
            name.clear();
        } else if (c != ' ') {
            name += c;
        }
    }
    return count;
}

// The members of a class with those of its bases, by the tables.
std::vector<krMemberInfo> ladder(const krClassInfo* info) {
    std::vector<krMemberInfo> members;
    for (; info; info = info->base ? krClasses::find(info->base) : nullptr)
        members.insert(members.end(), info->members.begin(), info->members.end());
    return members;
}

class Probe {
public:
    Probe(ClassTables& test, const std::string& expression) {
        // Held in GLOBALS, where the scripts that bind its events find it.
        test.runText("GLOBALS[\"probe\"] = " + expression + "; $handle = int(GLOBALS[\"probe\"]);");
        krVariant* v = test.scripts.back()->getField("handle");
        handle = v ? v->toInt() : 0;
        if (v) v->release();
    }
    ~Probe() {
        // Whatever the call left standing goes, unless it is the engine's own.
        auto* module = dynamic_cast<krModule*>(object());
        if (module && module != krMain::instance() && module != krScripting::instance()) module->dispose();
    }
    krScriptObject* object() const { return krScriptObject::fromHandle(handle); }

    // The member's answer, or "fell through" when the ladder passed it on to the event.
    std::string call(ClassTables& test, const std::string& name, size_t arguments) {
        test.runText("event GLOBALS[\"probe\"]: {\"" + name + "\"} () { return \"fell through\"; }");
        std::vector<krVariant*> args;
        for (size_t i = 0; i < arguments; ++i) args.push_back(new krVInt(0));
        krVariant* result = object()->getMember(name, nullptr, args);
        for (krVariant* a : args) a->release();
        std::string text = result ? result->toString() : "";
        if (result) result->release();
        return text;
    }

private:
    int32_t handle = 0;
};

}  // namespace

TEST_F(ClassTables, EveryFunctionSaysHowItIsCalled) {
    for (const std::string& name : krSymbols::functionNames()) {
        const char* usage = krSymbols::findFunction(name)->usage;
        ASSERT_NE(usage, nullptr) << name;
        EXPECT_EQ(usage[0], '(') << name << ": the usage line starts with the arguments";
        EXPECT_NE(std::string(usage).find("): "), std::string::npos) << name;
    }
}

TEST_F(ClassTables, EveryBaseAndFactoryExists) {
    for (const krClassInfo* info : krClasses::all()) {
        if (info->base) {
            EXPECT_NE(krClasses::find(info->base), nullptr) << info->name << " names base " << info->base;
        }
        if (info->factory) {
            EXPECT_NE(krSymbols::findFunction(info->factory), nullptr) << info->name;
        }
        std::set<std::string> names;
        for (const krMemberInfo& m : info->members) {
            EXPECT_TRUE(names.insert(m.name).second) << info->name << "." << m.name << " listed twice";
            EXPECT_TRUE((m.access & krCall) == 0 || m.type[0] == '(') << info->name << "." << m.name;
            EXPECT_TRUE(m.note && *m.note) << info->name << "." << m.name;
        }
    }
}

TEST_F(ClassTables, ListedMembersAreAnsweredByTheLadder) {
    std::vector<std::string> expressions(std::begin(reachable), std::end(reachable));
    for (const krClassInfo* info : krClasses::all())
        if (info->factory) expressions.push_back(makeExpression(info->factory));

    for (const std::string& expression : expressions) {
        std::string className;
        std::vector<krMemberInfo> members;
        {
            Probe probe(*this, expression);
            ASSERT_NE(probe.object(), nullptr) << expression << " made nothing: give its factory a call in makeExpression";
            className = probe.object()->className();
            const krClassInfo* info = krClasses::find(className.c_str());
            ASSERT_NE(info, nullptr) << className << " has no class table";
            members = ladder(info);
            for (const krMemberInfo& m : members) {
                if (m.access == krWrite || (m.access & krCall)) continue;
                EXPECT_NE(probe.call(*this, m.name, 0), "fell through") << className << "." << m.name << " is listed as readable";
            }
        }
        for (const krMemberInfo& m : members) {
            if (!(m.access & krCall) || unsafe(className, m.name)) continue;
            Probe probe(*this, expression);
            EXPECT_NE(probe.call(*this, m.name, requiredArguments(m.type)), "fell through")
                << className << "." << m.name << m.type << " is listed as a method";
        }
    }
}
