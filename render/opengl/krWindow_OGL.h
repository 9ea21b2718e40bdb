// krWindow_OGL: the window with its OpenGL context and its video. It runs the frame: reads the
// clock, pumps the message queue (keys and buttons become "keyDown_"/"keyUp_" events and calls
// on the input target), hands captured mouse moves to the target, clears, lets the video draw
// and swaps. Its init makes the window, finds the best format asked for, and tests what the
// driver can do for the whole renderer.
#pragma once

#include <cstdint>

#include "platform/krWindowSystem.h"
#include "render/krWindow.h"

class krVideo_OGL;

class krWindow_OGL : public krWindow, public krWindowListener {
public:
    // Largest client size asked for, in either direction; beyond it no driver has a surface.
    static constexpr int32_t maxSize = 16384;

    explicit krWindow_OGL(krModule* owner);
    ~krWindow_OGL() override;
    const char* className() const override { return "krWindow_OGL"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    bool init() override;
    bool update(float dt) override;
    void refresh() override;
    void setTitle(const std::string& title) override;
    void setMouseCapture(bool capture) override;
    virtual void setFullscreen(bool flag);
    void handleMessage(const krWindowMessage& message) override;

    krVideo_OGL* getVideo_OGL() const;
    // The window system's window, for code that draws into it outside the frame.
    krNativeWindow* getNative() const { return native; }
    int32_t getAntialiasing() const { return antialiasing; }
    bool isFullscreen() const { return fullscreen; }

private:
    void destroyNative();
    bool createNative(std::string& error);
    void betterFormat(krVideo_OGL* video);
    void testCapabilities(krVideo_OGL* video);
    void buildMode(krVideo_OGL* video, const krPixelFormat& format);
    void buildVersion();
    void holdCursor();
    void captureMouse();
    void pumpMessages();
    krDisplayMode displayMode() const;
    krInputObject* messageTarget() const { return inputOf(messageTargetHandle); }

    krNativeWindow* native = nullptr;
    bool started = false;
    uint64_t counterFrequency;
    uint64_t lastCounter = 0;
    int32_t shortFrames = 0;
    double shortSeconds = 0;
    int64_t allFrames = 0;
    double allSeconds = 0;
    int32_t centreX = 0, centreY = 0;
    float wheel = 0;
    int32_t antialiasing = 0;
    int32_t colorBits = 24;
    int32_t depthBits = 16;
    int32_t accumulationBits = 16;
    int32_t frequency = 0;
    bool fullscreen = true;
    bool ready = false;
    // The target this frame's messages go to, as it stood when the frame began.
    int32_t messageTargetHandle = 0;
};
