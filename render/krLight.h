// krLight: a point light of the 3D scene, listed by the video of its owner while it lives. The
// video hands lights to OpenGL in list order, as many as the driver offers.
#pragma once

#include "core/krColor.h"
#include "core/krModule.h"
#include "core/krVector3.h"

class krLight : public krModule {
public:
    explicit krLight(krModule* owner);
    ~krLight() override;
    const char* className() const override { return "krLight"; }
    static const krClassInfo info;

    krVector3 position;
    krColorF diffuse;
    krColorF ambient;
    krColorF specular;

private:
    friend class krVideo;
    // The video whose list holds this light; kept by the video itself.
    krVideo* listedIn = nullptr;
};
