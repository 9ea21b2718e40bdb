// krViewPort: a rectangle of the frame that shows one module subtree through one camera, or,
// as a 2D viewport, the overlay whose coordinates run from 0 to 1 across and from 0 to
// height / width down. A child of the video, drawn in the video's list order.
#pragma once

#include "core/krModule.h"

class krCamera;

class krViewPort : public krModule {
public:
    explicit krViewPort(krModule* owner) : krModule(owner) {}
    ~krViewPort() override;
    const char* className() const override { return "krViewPort"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;

    // Pixels of the frame buffer, origin bottom left.
    void setSize(float x, float y, float width, float height);
    float getX() const { return x; }
    float getY() const { return y; }
    float getWidth() const { return width; }
    float getHeight() const { return height; }

    // Null when none is set or it has been deleted.
    krCamera* getCamera() const;
    void setCamera(krCamera* camera);
    krModule* getModule() const;
    void setModule(krModule* module);
    bool is2D() const { return flat; }
    void set2D(bool flag) { flat = flag; }
    bool isCameraAssigned() const { return cameraAssigned; }

    // Samples that a quad over the whole viewport passes, measured by occlusion query; 0 asks
    // the video to measure again. Glows scale their brightness by it.
    float pixelCount = 0;

private:
    friend class krVideo;
    // The video whose list holds this viewport; kept by the video itself.
    krVideo* listedIn = nullptr;
    float x = 0, y = 0, width = 640, height = 480;
    // Camera and module by handle: scripts delete them at will.
    int32_t cameraHandle = 0;
    int32_t moduleHandle = 0;
    bool flat = false;
    bool cameraAssigned = false;
};
