// krModule: a node of the engine's object tree. Owners hold their children; the frame walks the
// tree last child first; teardown clears it last child first while each parent is still whole.
#pragma once

#include <initializer_list>
#include <list>
#include <vector>

#include "core/krMatrix.h"
#include "core/krScriptObject.h"
#include "core/krVector3.h"

class krModuleItem;
class krVideo;
class krSkeleton;

class krModule : public krScriptObject {
public:
    explicit krModule(krModule* owner);
    ~krModule() override;

    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    const char* className() const override { return "krModule"; }

    virtual void addChild(krModule* child);
    virtual void removeChild(krModule* child);
    virtual void childrenChanged() {}
    virtual void attach();
    virtual void deinit();
    virtual bool init();
    virtual bool update(float dt);
    virtual void moveToFirst();
    virtual void moveToLast();
    virtual void clearItems();
    virtual void clear();
    virtual void setOwner(krModule* newOwner);
    virtual void setVideo(krVideo* v) { video = v; }
    virtual void setVisible(bool v) { visible = v; }
    virtual void setAudible(bool a) { audible = a; }
    virtual void setEnabled(bool e) { enabled = e; }
    virtual void setMatrix(const krMatrix& m) { matrix = m; }
    virtual bool isInView() { return true; }
    virtual krSkeleton* getSkeleton() { return nullptr; }
    virtual krVector3 getVelocityAt(const krVector3& point);

    // Tears the module down and lets go of the reference its place in the tree held: the
    // `delete` of scripts. Once a teardown has begun, further requests do nothing, since
    // handlers of "delete" and frames further up may ask again and only the first may release.
    void dispose();

    // A video that goes away takes itself out of every module of this subtree that drew through it.
    void forgetVideo(krVideo* gone);

    // Modules that scripts make without an owner, or take out of their owner, belong to no child
    // list; the reference a child list would hold is kept here instead, so that they are torn
    // down with the rest at the end.
    static void adoptOrphan(krModule* module);
    // Tears down every module without an owner, last adopted first.
    static void releaseOrphans();

    krModule* getOwner() const { return owner; }
    krVideo* getVideo() const { return video; }
    const std::vector<krModule*>& getChildren() const { return children; }
    // The module's video items (render/krVideoItem.h), which add and remove themselves.
    std::list<krModuleItem*>& getVideoItems() { return videoItems; }
    const krMatrix& getMatrix() const { return matrix; }
    bool isVisible() const { return visible; }
    bool isAudible() const { return audible; }
    bool isEnabled() const { return enabled; }
    // From the start of its teardown (deinit, delete) until it is attached again.
    bool isTornDown() const { return tornDown; }
    krVariant* getTag() const { return tag; }

protected:
    krVariant* tag = nullptr;
    krVideo* video = nullptr;
    krModule* owner = nullptr;
    std::vector<krModule*> children;
    std::list<krModuleItem*> videoItems;
    krMatrix matrix{true};
    bool visible = false;
    bool audible = false;
    bool enabled = true;

private:
    // Marks the teardown begun; false when it had begun already.
    bool beginTeardown();
    // Set from the start of a teardown until the module is attached again.
    bool tornDown = false;
};

// Holds a reference on each module (nulls are passed over) for its own lifetime. Engine code that
// runs a script in the middle of its own work (an event, a companion or shader script) keeps what
// it works on this way: the script may delete any of it, and the work must find each module still
// in memory, torn down perhaps, until it is over.
class krModuleHold {
public:
    krModuleHold(std::initializer_list<krModule*> modules);
    ~krModuleHold();
    krModuleHold(const krModuleHold&) = delete;
    krModuleHold& operator=(const krModuleHold&) = delete;

private:
    std::vector<krModule*> held;
};
