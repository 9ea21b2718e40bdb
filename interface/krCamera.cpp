// Argument helpers that the camera classes share.
#include "interface/krCamera.h"

#include "script/krClassInfo.h"
#include "script/krVariant.h"

const krClassInfo krCamera::info = {"krCamera", "krModule", nullptr, {}, {},
                                    "what a viewport looks through; it looks along its -Z with +Y up"};

krVector3 krCameraVectorArgs(const krArgs& args) {
    return {args[0]->toFloat(), args[1]->toFloat(), args[2]->toFloat()};
}

krQuat krCameraRotationArgs(const krArgs& args) {
    return krQuat::fromAxisAngle(args[0]->toFloat(),
                                 krVector3(args[1]->toFloat(), args[2]->toFloat(), args[3]->toFloat()));
}
