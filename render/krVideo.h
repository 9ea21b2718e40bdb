// krVideo: the draw loop. It keeps the viewports in drawing order and the lights, and for each
// viewport walks the module subtree it shows: visible modules that are in view let their video
// items draw, or enter the queues of the concrete video. The view fields of the viewport being
// drawn (eye, view direction, view cone) are what modules answer isInView from.
#pragma once

#include <vector>

#include "core/krColor.h"
#include "core/krModule.h"
#include "core/krVector3.h"

class krCamera;
class krLight;
class krViewPort;
class krVideoItem;
struct krMesh;
struct krDynamicData;
struct krTextData;

class krVideo : public krModule {
public:
    // A viewport without a camera looks down -Z from the origin with these.
    static constexpr float defaultFieldOfView = 60;
    static constexpr float defaultFarPlane = 100;

    explicit krVideo(krModule* owner);
    ~krVideo() override;
    const char* className() const override { return "krVideo"; }
    static const krClassInfo info;

    krVariant* getMember(const std::string& name, krBlock* caller, const krArgs& args) override;
    void setMember(const std::string& name, krVariant* value) override;
    void addChild(krModule* child) override;
    void removeChild(krModule* child) override;
    void deinit() override;
    bool update(float dt) override;

    // A new viewport goes on top of the others and becomes the current one.
    virtual void addViewPort(krViewPort* viewport);
    virtual void removeViewPort(krViewPort* viewport);
    // The item factories of the concrete video; the base makes nothing.
    virtual krVideoItem* createMeshItem(krModule*, krMesh*, int32_t) { return nullptr; }
    virtual krVideoItem* createDynamicItem(krModule*, krDynamicData*, int32_t) { return nullptr; }
    virtual krVideoItem* createTextItem(krModule*, krTextData*, int32_t) { return nullptr; }
    virtual void setItemData(krVideoItem*, krDynamicData*) {}
    virtual float textCharWidth(krVideoItem*, int32_t) { return 0; }
    virtual float textWidth(krVideoItem*) { return 0; }
    // The walk of the current viewport's module, with the camera's view fields set first.
    virtual void drawScene(float x, float y, float width, float height);
    virtual void drawViewport() {}
    // The module's items draw, then its visible children that are in view, recursively.
    virtual void drawModule(krModule* module);

    // Drawing order: the first viewport is drawn first, the last lies on top.
    void sendToBack(krViewPort* viewport);
    void bringToFront(krViewPort* viewport);
    const std::vector<krViewPort*>& getViewPorts() const { return viewports; }

    void addLight(krLight* light);
    void removeLight(krLight* light);
    const std::vector<krLight*>& getLights() const { return lights; }

    krViewPort* getCurrentViewPort() const { return currentViewPort; }
    krCamera* getCurrentCamera() const { return currentCamera; }
    const krVector3& getEye() const { return eye; }
    const krVector3& getViewDirection() const { return viewDirection; }
    float getViewCone() const { return viewCone; }

    bool fogEnabled = false;
    krColorF fogColor;
    float fogStart = 10000;
    float fogEnd = 100000;

protected:
    krViewPort* currentViewPort = nullptr;
    std::vector<krViewPort*> viewports;
    std::vector<krLight*> lights;
    krCamera* currentCamera = nullptr;
    krVector3 eye;
    krVector3 viewEnd;
    krVector3 viewDirection{0, 0, 1};
    // Tangent of the half angle from the view axis to a corner of the frustum.
    float viewCone = 1;
};
