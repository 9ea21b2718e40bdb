// The video's walk: viewports in order, each module subtree by visibility and view.
#include "render/krVideo.h"

#include <algorithm>
#include <cmath>

#include "core/krMain.h"
#include "interface/krCamera.h"
#include "platform/krSystem.h"
#include "render/krLight.h"
#include "render/krVideoItem.h"
#include "render/krViewPort.h"
#include "script/krClassInfo.h"
#include "script/krVariant.h"

namespace {
const krMemberInfo videoMembers[] = {
    {"fogEnabled", krRead | krWrite, "bool", "fog over the 3D scenes"},
};
}

const krClassInfo krVideo::info = {"krVideo", "krModule", nullptr, videoMembers, {},
                                   "the draw loop of a window: its viewports in order, its lights"};

krVideo::krVideo(krModule* o) : krModule(o) {
    if (owner) owner->setVideo(this);
    video = this;
}

krVideo::~krVideo() {
    // Lights, viewports and modules that outlive the video must not reach back into it.
    for (krLight* light : lights) light->listedIn = nullptr;
    for (krViewPort* viewport : viewports) viewport->listedIn = nullptr;
    if (krMain* root = krMain::instance()) root->forgetVideo(this);
}

void krVideo::deinit() {
    if (owner && owner->getVideo() == this) owner->setVideo(nullptr);
    krModule::deinit();
}

void krVideo::addChild(krModule* child) {
    krModule::addChild(child);
    if (auto* viewport = dynamic_cast<krViewPort*>(child)) addViewPort(viewport);
}

void krVideo::removeChild(krModule* child) {
    if (auto* viewport = dynamic_cast<krViewPort*>(child)) removeViewPort(viewport);
    krModule::removeChild(child);
}

void krVideo::addViewPort(krViewPort* viewport) {
    if (viewport->listedIn && viewport->listedIn != this) viewport->listedIn->removeViewPort(viewport);
    if (std::find(viewports.begin(), viewports.end(), viewport) == viewports.end()) viewports.push_back(viewport);
    viewport->listedIn = this;
    // Measured again at its first scene in this video.
    viewport->pixelCount = 0;
    currentViewPort = viewport;
}

void krVideo::removeViewPort(krViewPort* viewport) {
    auto it = std::find(viewports.begin(), viewports.end(), viewport);
    if (it != viewports.end()) viewports.erase(it);
    if (viewport->listedIn == this) viewport->listedIn = nullptr;
    if (currentViewPort == viewport) currentViewPort = nullptr;
}

void krVideo::sendToBack(krViewPort* viewport) {
    auto it = std::find(viewports.begin(), viewports.end(), viewport);
    if (it != viewports.end()) std::rotate(viewports.begin(), it, it + 1);
}

void krVideo::bringToFront(krViewPort* viewport) {
    auto it = std::find(viewports.begin(), viewports.end(), viewport);
    if (it != viewports.end()) std::rotate(it, it + 1, viewports.end());
}

void krVideo::addLight(krLight* light) {
    if (light->listedIn && light->listedIn != this) light->listedIn->removeLight(light);
    if (std::find(lights.begin(), lights.end(), light) == lights.end()) lights.push_back(light);
    light->listedIn = this;
}

void krVideo::removeLight(krLight* light) {
    auto it = std::find(lights.begin(), lights.end(), light);
    if (it != lights.end()) lights.erase(it);
    if (light->listedIn == this) light->listedIn = nullptr;
}

bool krVideo::update(float dt) {
    if (!krModule::update(dt)) return false;
    // By index against the present size: a draw may make or delete viewports through events.
    for (size_t i = 0; i < viewports.size(); ++i) {
        krViewPort* viewport = viewports[i];
        currentViewPort = viewport;
        if (!viewport->isVisible()) continue;
        currentCamera = viewport->getCamera();
        drawViewport();
    }
    return true;
}

void krVideo::drawScene(float, float, float width, float height) {
    krViewPort* viewport = currentViewPort;
    krModule* root = viewport ? viewport->getModule() : nullptr;
    if (!root || !owner || !owner->isVisible()) return;
    // Without a camera the scene is seen from the origin down -Z, as it is drawn; culling must
    // look the same way.
    krCamera* camera = currentCamera;
    eye = camera ? camera->getPosition() : krVector3();
    viewDirection = camera ? (camera->getTarget() - eye) * camera->getDistance() : krVector3(0, 0, -defaultFarPlane);
    viewEnd = eye + viewDirection;
    const float t = std::tan((camera ? camera->getFov() : defaultFieldOfView) * krDegToRad * 0.5f);
    const float across = height != 0 ? t * width / height : t;
    viewCone = std::sqrt(t * t + across * across);
    if (root->isVisible() && root->isInView()) drawModule(root);
}

void krVideo::drawModule(krModule* module) {
    // Below what the stack allows the subtree is not drawn; the tree's update walk says so.
    if (krSystem::stackLow()) return;
    // Only video items enter a module's item list.
    for (krModuleItem* item : module->getVideoItems()) static_cast<krVideoItem*>(item)->draw();
    const auto& children = module->getChildren();
    for (size_t i = 0; i < children.size(); ++i) {
        krModule* child = children[i];
        if (child->isVisible() && child->isInView()) drawModule(child);
    }
}

krVariant* krVideo::getMember(const std::string& name, krBlock* caller, const krArgs& args) {
    if (name == "fogEnabled") return new krVBool(fogEnabled);
    return krModule::getMember(name, caller, args);
}

void krVideo::setMember(const std::string& name, krVariant* value) {
    if (name == "fogEnabled") fogEnabled = value->toBool();
    else krModule::setMember(name, value);
}
