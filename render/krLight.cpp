// Lights: membership in the video's light list.
#include "render/krLight.h"

#include "render/krVideo.h"
#include "script/krClassInfo.h"

const krClassInfo krLight::info = {"krLight", "krModule", nullptr, {}, {},
                                   "a point light of the 3D scene, listed by its owner's video"};

krLight::krLight(krModule* o) : krModule(o) {
    if (video) video->addLight(this);
}

krLight::~krLight() {
    if (listedIn) listedIn->removeLight(this);
}
