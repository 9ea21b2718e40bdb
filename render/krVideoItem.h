// krVideoItem: something a module draws. Items live in their module's item list from construction
// (when asked to) until destruction; the draw walk calls `draw` on each, and an item either draws
// at once (2D overlays) or enters one of the video's queues, which call it back in their order:
//   opaque queue: `draw` again from the queue, sorted by shader;
//   glow queue:   `drawQuery` in the scene, `readQuery` after it, `drawGlow` in the 2D pass;
//   alpha queue:  `drawAlpha`, farthest first.
#pragma once

#include "core/krModuleItem.h"

class krModule;
class krShader_OGL;
class krVideo_OGL;

class krVideoItem : public krModuleItem {
public:
    // With `add` set the item enters the module's item list, which then owns it.
    krVideoItem(krModule* module, bool add);
    ~krVideoItem() override;

    const char* className() const override { return "krVideoItem"; }
    krModule* getModule() const { return module; }
    // Enters the module's item list, which then owns the item: for an item made apart first.
    void joinModule();

    virtual void draw() {}
    virtual void drawAlpha() {}
    virtual void drawQuery() {}
    // After the scene: whether the glow stays queued for the 2D pass.
    virtual bool readQuery() { return false; }
    virtual void drawGlow() {}

protected:
    krModule* module;
    bool listed;
};

// The OpenGL base of items: what the queues of krVideo_OGL hold.
class krVideoItem_OGL : public krVideoItem {
public:
    krVideoItem_OGL(krModule* module, bool add, krVideo_OGL* video) : krVideoItem(module, add), video(video) {}
    const char* className() const override { return "krVideoItem_OGL"; }

    krVideo_OGL* getVideo() const { return video; }
    // The opaque queue runs grouped by this, so each program is bound once a scene.
    krShader_OGL* getShader() const { return shader; }

protected:
    krVideo_OGL* video;
    // The program the item draws with; null draws with fixed-function state.
    krShader_OGL* shader = nullptr;
};
