// Helpers of the window tests: the root and script host, an OpenGL window that records the
// events it fires, a probe that reads the back buffer after the video has drawn and before the
// swap, and test-only video items that draw plain quads through the video's queues.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/krMain.h"
#include "gl_events.h"
#include "platform/krSystem.h"
#include "render/krVideoItem.h"
#include "render/krViewPort.h"
#include "render/opengl/krGL.h"
#include "render/opengl/krVideo_OGL.h"
#include "render/opengl/krWindow_OGL.h"
#include "script/krBlock.h"
#include "script/krScripting.h"

namespace glTesting {

struct Reports {
    std::vector<std::string> errors, infos, boxes, boxTitles;
    bool hasError(const std::string& text) const { return errorCount(text) > 0; }
    int errorCount(const std::string& text) const {
        int n = 0;
        for (const auto& e : errors) n += e == text;
        return n;
    }
};

Reports& reports();

// A window that notes the names of the events it fires.
class RecordingWindow : public krWindow_OGL {
public:
    using krWindow_OGL::krWindow_OGL;
    krVariant* fireEvent(const std::string& name, const krArgs& args) override {
        fired.push_back(name);
        return krWindow_OGL::fireEvent(name, args);
    }
    std::vector<std::string> fired;
};

// Reads the frame after everything else of the window has run: the first child of the window
// is updated last, after the video.
class PixelProbe : public krModule {
public:
    using krModule::krModule;
    bool update(float) override;
    // Red, green, blue, alpha at a window pixel, origin bottom left.
    const uint8_t* at(int32_t x, int32_t y) const { return &pixels[static_cast<size_t>((y * width + x) * 4)]; }
    std::vector<uint8_t> pixels;
    int32_t width = 0, height = 0;
};

// A flat square of side `size` around the module's origin in its x-y plane, facing +Z, in one
// colour. Where it goes is chosen by `route`: drawn at once (2D overlays), or through one of the
// video's queues, which call its part back.
class QuadItem : public krVideoItem_OGL {
public:
    enum Route { direct, opaque, alpha, glow };
    QuadItem(krModule* module, krVideo_OGL* video, Route route, krColorF color, float size = 1);

    void draw() override;
    // The order in which queued parts were called back, across all items.
    static std::vector<const QuadItem*>& drawOrder();
    // A fake program for the opaque sort: the queue only compares these.
    void setShaderKey(uintptr_t key) { shader = reinterpret_cast<krShader_OGL*>(key); }

    bool lit = false;
    // Set by the glow's query: samples it passed.
    uint32_t samples = 0;
    int32_t glowDrawn = 0;

private:
    struct Part : krVideoItem_OGL {
        explicit Part(QuadItem* owner) : krVideoItem_OGL(owner->getModule(), false, owner->getVideo()), quad(owner) {}
        ~Part() override {
            if (query) krglDeleteQueriesARB(1, &query);
        }
        void draw() override { quad->drawQuad(true); }
        void drawAlpha() override { quad->drawQuad(true); }
        void drawQuery() override;
        bool readQuery() override;
        void drawGlow() override { ++quad->glowDrawn; }
        void sortAs(krShader_OGL* key) { shader = key; }
        QuadItem* quad;
        uint32_t query = 0;
    };
    void drawQuad(bool queued);

    Route route;
    krColorF color;
    float size;
    Part part;
};

class Window : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Makes the window of the given size, not fullscreen; false if init failed.
    bool open(int32_t width = 64, int32_t height = 48);
    // One frame of the whole tree; the probe holds its picture.
    bool frame(float dt = 0.01f);
    krModule* module(krModule* owner = nullptr);
    krViewPort* viewport(float x, float y, float width, float height, krModule* shown, bool flat = false);
    QuadItem* quad(krModule* owner, QuadItem::Route route, krColorF color, float size = 1);
    // A pixel of the last frame, as 0xRRGGBB.
    uint32_t pixel(int32_t x, int32_t y) const;

    krMain* root = nullptr;
    krScripting* host = nullptr;
    RecordingWindow* window = nullptr;
    krVideo_OGL* video = nullptr;
    PixelProbe* probe = nullptr;
};

inline uint8_t red(uint32_t p) { return static_cast<uint8_t>(p >> 16); }
inline uint8_t green(uint32_t p) { return static_cast<uint8_t>(p >> 8); }
inline uint8_t blue(uint32_t p) { return static_cast<uint8_t>(p); }

// Writes a script member, taking over the value's reference.
inline void set(krScriptObject* object, const char* name, krVariant* value) {
    object->setMember(name, value);
    value->release();
}


}
