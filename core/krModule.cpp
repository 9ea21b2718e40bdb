// Modules: the tree walks and the members every module answers.
#include "core/krModule.h"

#include <algorithm>

#include "core/krMain.h"
#include "core/krModuleItem.h"
#include "platform/krSystem.h"
#include "script/krClassInfo.h"
#include "script/krVArray.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo moduleMembers[] = {
    {"init", krCall, "()", "initialises the module and its children; false when one refused"},
    {"clear", krCall, "()", "tears down every child"},
    {"visible", krRead | krWrite, "bool", "drawn, with its subtree"},
    {"audible", krRead | krWrite, "bool", "heard, with its subtree"},
    {"enabled", krRead | krWrite, "bool", "updated each frame, with its subtree"},
    {"tag", krRead | krWrite, "any", "a free value for scripts"},
    {"owner", krRead | krWrite, "object", "the module this one hangs below; writing moves it"},
    {"show", krCall, "()", "visible = true"},
    {"hide", krCall, "()", "visible = false"},
    {"enable", krCall, "()", "enabled = true"},
    {"disable", krCall, "()", "enabled = false"},
    {"moveToFirst", krCall, "()", "first among its owner's children: updated last"},
    {"moveToLast", krCall, "()", "last among its owner's children: updated first"},
    {"class", krRead, "string", "the name of the most derived class"},
    {"count", krRead, "int", "the number of children"},
    {"child", krCall, "(index)", "the child at that index, or null"},
    {"children", krRead, "array", "the children in order"},
    {"videoitems", krRead, "array", "the class names of the module's video items"},
};

const krEventInfo moduleEvents[] = {
    {"delete", "()", "the module is being torn down, its subtree still whole"},
};

// Modules whose teardown was put off because the stack ran low on the way down a deep tree. The
// outermost teardown works through them, each from a stack of its own, so that no depth of tree
// can overflow it.
std::vector<krModule*>& deferredTeardowns() {
    static std::vector<krModule*> list;
    return list;
}
// How many teardown walks (clear) are under way on the stack.
int clearDepth = 0;

// A walk that stops where the stack runs low says so once: a tree that deep stays that deep, and
// the walks of every frame would repeat it.
void reportTooDeep(const char* walk) {
    static bool said = false;
    if (said) return;
    said = true;
    krSystem::StackReserve reserve;
    if (krMain* root = krMain::instance())
        root->errorMsg(std::string("The module tree is too deep: its deepest modules are not ") + walk);
}

std::vector<krModule*>& orphans() {
    static std::vector<krModule*> list;
    return list;
}

void forgetOrphan(krModule* module) {
    auto& list = orphans();
    auto it = std::find(list.begin(), list.end(), module);
    if (it != list.end()) list.erase(it);
}
}

const krClassInfo krModule::info = {"krModule", "krScriptObject", "new_module", moduleMembers, moduleEvents,
                                    "a node of the object tree: everything that lives in the engine is one"};

krModuleHold::krModuleHold(std::initializer_list<krModule*> modules) {
    for (krModule* m : modules) {
        if (!m) continue;
        m->addRef();
        held.push_back(m);
    }
}

krModuleHold::~krModuleHold() {
    for (krModule* m : held) m->release();
}

void krModule::adoptOrphan(krModule* module) {
    if (!module->owner && std::find(orphans().begin(), orphans().end(), module) == orphans().end())
        orphans().push_back(module);
}

void krModule::releaseOrphans() {
    auto& list = orphans();
    while (!list.empty()) {
        krModule* module = list.back();
        list.pop_back();
        module->dispose();
    }
}

krModule::krModule(krModule* o) : owner(o) {
    if (owner) video = owner->video;
}

krModule::~krModule() {
    if (tag) tag->release();
}

void krModule::addChild(krModule* child) {
    children.push_back(child);
    childrenChanged();
}

void krModule::removeChild(krModule* child) {
    auto it = std::find(children.begin(), children.end(), child);
    if (it != children.end()) children.erase(it);
    childrenChanged();
}

void krModule::attach() {
    tornDown = false;
    if (owner) owner->addChild(this);
}

bool krModule::beginTeardown() {
    if (tornDown) return false;
    tornDown = true;
    return true;
}

void krModule::dispose() {
    if (!beginTeardown()) return;
    deinit();
    release();
}

bool krModule::init() {
    if (krSystem::stackLow()) {
        reportTooDeep("initialised");
        return false;
    }
    // The count is taken once: modules that init creates are initialised by whoever made them.
    for (int i = static_cast<int>(children.size()) - 1; i >= 0; --i) {
        if (i >= static_cast<int>(children.size())) continue;
        if (!children[static_cast<size_t>(i)]->init()) return false;
    }
    return true;
}

bool krModule::update(float dt) {
    if (krSystem::stackLow()) {
        reportTooDeep("updated");
        return true;
    }
    // By index against the present size: a child may delete itself or its siblings meanwhile,
    // and the reference held across its update keeps it alive until the walk has left it.
    int i = static_cast<int>(children.size());
    while (--i >= 0) {
        if (i >= static_cast<int>(children.size())) continue;
        krModule* child = children[static_cast<size_t>(i)];
        if (!child->enabled) continue;
        child->addRef();
        const bool ok = child->update(dt);
        child->release();
        if (!ok) return false;
    }
    return true;
}

void krModule::deinit() {
    krVariant* result = fireEvent("delete", noArgs);
    if (result) result->release();
    clearItems();
    clear();
    visible = false;
    enabled = false;
    if (owner) {
        owner->removeChild(this);
        owner = nullptr;
    } else {
        forgetOrphan(this);
    }
    if (tag) {
        krVariant* old = tag;
        tag = nullptr;
        old->release();
    }
}

void krModule::moveToFirst() {
    if (!owner || owner->children.empty() || owner->children.front() == this) return;
    auto& list = owner->children;
    auto it = std::find(list.begin(), list.end(), this);
    if (it == list.end()) return;
    list.erase(it);
    list.insert(list.begin(), this);
    owner->childrenChanged();
}

void krModule::moveToLast() {
    if (!owner || owner->children.empty() || owner->children.back() == this) return;
    auto& list = owner->children;
    auto it = std::find(list.begin(), list.end(), this);
    if (it == list.end()) return;
    list.erase(it);
    list.push_back(this);
    owner->childrenChanged();
}

void krModule::clearItems() {
    // An item takes itself off the list when destroyed.
    while (!videoItems.empty()) {
        krModuleItem* item = videoItems.back();
        delete item;
        if (!videoItems.empty() && videoItems.back() == item) videoItems.pop_back();
    }
}

void krModule::clear() {
    // Last child first; each child leaves the vector in its own deinit, so the walk always takes
    // the last one there is now.
    ++clearDepth;
    while (!children.empty()) {
        krModule* child = children.back();
        if (!child->beginTeardown()) {
            // Its own teardown runs further up the stack and lets go of this list's reference;
            // here it only leaves the tree, which is going.
            children.pop_back();
            child->owner = nullptr;
            childrenChanged();
            continue;
        }
        if (krSystem::stackLow()) {
            // Too deep to go further down from here: the child leaves the tree with the reference
            // this list held, and is torn down from the top.
            children.pop_back();
            child->owner = nullptr;
            childrenChanged();
            deferredTeardowns().push_back(child);
            continue;
        }
        child->deinit();
        if (!children.empty() && children.back() == child) children.pop_back();
        child->release();
    }
    if (--clearDepth > 0) return;
    auto& deferred = deferredTeardowns();
    while (!deferred.empty()) {
        krModule* module = deferred.back();
        deferred.pop_back();
        // Counted as under way, so that its own walk leaves the rest of the list to this loop.
        ++clearDepth;
        module->deinit();
        --clearDepth;
        module->release();
    }
}

void krModule::setOwner(krModule* newOwner) {
    // A module on its way out holds no place a tree could take over.
    if (tornDown) return;
    // A module cannot move below itself: the tree would become a cycle.
    for (krModule* m = newOwner; m; m = m->owner)
        if (m == this) return;
    if (owner) owner->removeChild(this);
    else forgetOrphan(this);
    owner = newOwner;
    if (!owner) {
        video = nullptr;
        adoptOrphan(this);
        return;
    }
    owner->addChild(this);
    video = owner->video;
}

void krModule::forgetVideo(krVideo* gone) {
    // Without recursion: a tree may be deeper than the stack.
    std::vector<krModule*> pending{this};
    while (!pending.empty()) {
        krModule* m = pending.back();
        pending.pop_back();
        if (m->video == gone) m->video = nullptr;
        pending.insert(pending.end(), m->children.begin(), m->children.end());
    }
}

krVector3 krModule::getVelocityAt(const krVector3& point) {
    return owner ? owner->getVelocityAt(point) : krVector3();
}

krVariant* krModule::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "init") return new krVBool(init());
    if (name == "clear") {
        clear();
        return nullptr;
    }
    if (name == "visible") return new krVBool(visible);
    if (name == "audible") return new krVBool(audible);
    if (name == "enabled") return new krVBool(enabled);
    if (name == "tag") return tag ? tag->addRef() : nullptr;
    if (name == "owner") return new krVObject(owner);
    if (name == "show") {
        setVisible(true);
        return nullptr;
    }
    if (name == "hide") {
        setVisible(false);
        return nullptr;
    }
    if (name == "enable") {
        setEnabled(true);
        return nullptr;
    }
    if (name == "disable") {
        setEnabled(false);
        return nullptr;
    }
    if (name == "moveToFirst" && args.empty()) {
        moveToFirst();
        return nullptr;
    }
    if (name == "moveToLast" && args.empty()) {
        moveToLast();
        return nullptr;
    }
    if (name == "class") return new krVString(className());
    if (name == "count") return new krVInt(static_cast<int32_t>(children.size()));
    if (name == "child" && args.size() == 1) {
        const int32_t index = args[0]->toInt();
        if (index < 0 || index >= static_cast<int32_t>(children.size())) return nullptr;
        return new krVObject(children[static_cast<size_t>(index)]);
    }
    if (name == "children") {
        auto* list = new krVArray();
        for (krModule* child : children) list->append(new krVObject(child));
        return list;
    }
    if (name == "videoitems") {
        auto* list = new krVArray();
        for (krModuleItem* item : videoItems) list->append(new krVString(item->className()));
        return list;
    }
    return krScriptObject::getMember(name, caller, args);
}

void krModule::setMember(const std::string& name, krVariant* value) {
    if (name == "visible") {
        setVisible(value->toBool());
    } else if (name == "audible") {
        setAudible(value->toBool());
    } else if (name == "enabled") {
        setEnabled(value->toBool());
    } else if (name == "tag") {
        krVariant* stored = value->share();
        if (tag) tag->release();
        tag = stored;
    } else if (name == "owner") {
        // An object value's int is its handle; anything that is not a live module means no owner.
        krScriptObject* target = krScriptObject::fromHandle(value->toInt());
        auto* module = dynamic_cast<krModule*>(target);
        if (module || !target) setOwner(module);
    } else {
        krScriptObject::setMember(name, value);
    }
}
