// Blended mesh shaders: the way into the alpha queue.
#include "render/opengl/krMeshShaderAlpha_OGL.h"

void krMeshShaderAlpha_OGL::draw() {
    const krVector3 world = transformPoint(placement(), centre);
    video->queueAlpha(this, distanceSquared(video->getEyeCopy(), world));
}
