// krWindow: the script-visible top-level output surface. It keeps the frame statistics, the
// input targets with their priorities, and the settings a script gives before init; the window
// system and the drawing context belong to its concrete class.
#pragma once

#include <string>
#include <vector>

#include "core/krColor.h"
#include "core/krModule.h"

class krInputObject;
class krVideo;

class krWindow : public krModule {
public:
    explicit krWindow(krModule* owner);
    const char* className() const override { return "krWindow"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;

    // Redraws the video alone, for scripts that work long between frames.
    virtual void refresh() {}
    // The size setters only store: a size counts from the next init.
    virtual void setWidth(int32_t w) { width = w; }
    virtual void setHeight(int32_t h) { height = h; }
    virtual void setSize(int32_t w, int32_t h) {
        setWidth(w);
        setHeight(h);
    }
    virtual void setTitle(const std::string& t) { title = t; }
    // Null picks from the list: the highest priority, the later of equals.
    virtual void setInputTarget(krInputObject* target);
    virtual void addInputTarget(krInputObject* target, int32_t priority);
    // Takes out the last entry of that target.
    virtual void removeInputTarget(krInputObject* target);
    virtual void setWaitMessages(bool wait) { waitMessages = wait; }
    virtual void setMouseCapture(bool capture) { mouseCapture = capture; }

    // The target in force, or null (also when it has been deleted).
    krInputObject* getInputTarget() const;
    krVideo* getVideoModule() const;
    const krColor& getBackground() const { return background; }
    int32_t getWidth() const { return width; }
    int32_t getHeight() const { return height; }
    bool getWaitMessages() const { return waitMessages; }
    const std::string& getMode() const { return mode; }
    const std::string& getVersion() const { return version; }

protected:
    // Targets are held by the handles of their objects: any of them can be deleted by a script
    // while it is listed or in force.
    static krInputObject* inputOf(int32_t handle);
    static int32_t handleOf(krInputObject* target);
    // Fires the event of a key going down or up on this window.
    void fireKeyEvent(bool down, int32_t code);

    struct InputEntry {
        int32_t priority;
        int32_t handle;
    };

    std::string title = "Kerrin Window";
    std::string mode;
    std::string version;
    krColor background{0, 0, 0, 255};
    float fps = 0;
    float avgFps = 0;
    float frameTime = 0;
    int32_t width = 640;
    int32_t height = 480;
    std::vector<InputEntry> inputTargets;
    int32_t inputTarget = 0;
    bool active = true;
    bool waitMessages = false;
    bool mouseCapture = false;
    int32_t key = 0;
    // The video that belongs to this window, by handle: a script may delete it.
    int32_t videoHandle = 0;
};
