// Lights: membership in the video's light list.
#include "render/krLight.h"

#include "render/krVideo.h"

krLight::krLight(krModule* o) : krModule(o) {
    if (video) video->addLight(this);
}

krLight::~krLight() {
    if (listedIn) listedIn->removeLight(this);
}
