// OpenGL for the renderer: the system headers, the entry points of extensions that are loaded at
// run time (each behind a "kr" prefix, since the system headers declare some under the plain
// name), and the capability groups that the window tests once its context stands.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

#include "core/krColor.h"

// Each group: its entry points as (pointer type, name).
#define KR_GL_MINIMUM(X)                                          \
    X(PFNGLCOMPRESSEDTEXIMAGE2DARBPROC, glCompressedTexImage2DARB) \
    X(PFNGLACTIVETEXTUREPROC, glActiveTexture)                     \
    X(PFNGLCLIENTACTIVETEXTUREARBPROC, glClientActiveTexture)

#define KR_GL_OCCLUSION(X)                                  \
    X(PFNGLGENQUERIESARBPROC, glGenQueriesARB)               \
    X(PFNGLDELETEQUERIESARBPROC, glDeleteQueriesARB)         \
    X(PFNGLBEGINQUERYARBPROC, glBeginQueryARB)               \
    X(PFNGLENDQUERYARBPROC, glEndQueryARB)                   \
    X(PFNGLGETQUERYOBJECTUIVARBPROC, glGetQueryObjectuivARB)

#define KR_GL_POINT_SPRITES(X)                             \
    X(PFNGLPOINTPARAMETERFARBPROC, glPointParameterfARB)    \
    X(PFNGLPOINTPARAMETERFVARBPROC, glPointParameterfvARB)

#define KR_GL_VERTEX_ATTRIBUTES(X)                                           \
    X(PFNGLENABLEVERTEXATTRIBARRAYARBPROC, glEnableVertexAttribArrayARB)      \
    X(PFNGLDISABLEVERTEXATTRIBARRAYARBPROC, glDisableVertexAttribArrayARB)    \
    X(PFNGLVERTEXATTRIBPOINTERARBPROC, glVertexAttribPointerARB)              \
    X(PFNGLGETATTRIBLOCATIONARBPROC, glGetAttribLocationARB)                  \
    X(PFNGLBINDATTRIBLOCATIONARBPROC, glBindAttribLocationARB)

#define KR_GL_VERTEX_BUFFERS(X)                        \
    X(PFNGLGENBUFFERSARBPROC, glGenBuffersARB)          \
    X(PFNGLBINDBUFFERARBPROC, glBindBufferARB)          \
    X(PFNGLBUFFERDATAARBPROC, glBufferDataARB)          \
    X(PFNGLDELETEBUFFERSARBPROC, glDeleteBuffersARB)    \
    X(PFNGLMAPBUFFERARBPROC, glMapBufferARB)            \
    X(PFNGLUNMAPBUFFERARBPROC, glUnmapBufferARB)

// Offscreen targets are framebuffer objects here; render targets (bloom) draw through them.
#define KR_GL_PIXEL_BUFFERS(X)                                        \
    X(PFNGLGENFRAMEBUFFERSPROC, glGenFramebuffers)                     \
    X(PFNGLDELETEFRAMEBUFFERSPROC, glDeleteFramebuffers)               \
    X(PFNGLBINDFRAMEBUFFERPROC, glBindFramebuffer)                     \
    X(PFNGLFRAMEBUFFERTEXTURE2DPROC, glFramebufferTexture2D)           \
    X(PFNGLCHECKFRAMEBUFFERSTATUSPROC, glCheckFramebufferStatus)       \
    X(PFNGLGENRENDERBUFFERSPROC, glGenRenderbuffers)                   \
    X(PFNGLDELETERENDERBUFFERSPROC, glDeleteRenderbuffers)             \
    X(PFNGLBINDRENDERBUFFERPROC, glBindRenderbuffer)                   \
    X(PFNGLRENDERBUFFERSTORAGEPROC, glRenderbufferStorage)             \
    X(PFNGLFRAMEBUFFERRENDERBUFFERPROC, glFramebufferRenderbuffer)

#define KR_GL_GLSL(X)                                                \
    X(PFNGLCREATEPROGRAMOBJECTARBPROC, glCreateProgramObjectARB)      \
    X(PFNGLDELETEOBJECTARBPROC, glDeleteObjectARB)                    \
    X(PFNGLUSEPROGRAMOBJECTARBPROC, glUseProgramObjectARB)            \
    X(PFNGLCREATESHADEROBJECTARBPROC, glCreateShaderObjectARB)        \
    X(PFNGLSHADERSOURCEARBPROC, glShaderSourceARB)                    \
    X(PFNGLCOMPILESHADERARBPROC, glCompileShaderARB)                  \
    X(PFNGLGETOBJECTPARAMETERIVARBPROC, glGetObjectParameterivARB)    \
    X(PFNGLATTACHOBJECTARBPROC, glAttachObjectARB)                    \
    X(PFNGLGETINFOLOGARBPROC, glGetInfoLogARB)                        \
    X(PFNGLLINKPROGRAMARBPROC, glLinkProgramARB)                      \
    X(PFNGLGETUNIFORMLOCATIONARBPROC, glGetUniformLocationARB)        \
    X(PFNGLUNIFORM4FARBPROC, glUniform4fARB)                          \
    X(PFNGLUNIFORM3FVARBPROC, glUniform3fvARB)                        \
    X(PFNGLUNIFORM2FARBPROC, glUniform2fARB)                          \
    X(PFNGLUNIFORM3FARBPROC, glUniform3fARB)                          \
    X(PFNGLUNIFORM1IARBPROC, glUniform1iARB)                          \
    X(PFNGLUNIFORM1FARBPROC, glUniform1fARB)                          \
    X(PFNGLUNIFORMMATRIX3FVARBPROC, glUniformMatrix3fvARB)            \
    X(PFNGLUNIFORMMATRIX4FVARBPROC, glUniformMatrix4fvARB)

#define KR_GL_ALL(X)        \
    KR_GL_MINIMUM(X)        \
    KR_GL_OCCLUSION(X)      \
    KR_GL_POINT_SPRITES(X)  \
    KR_GL_VERTEX_ATTRIBUTES(X) \
    KR_GL_VERTEX_BUFFERS(X) \
    KR_GL_PIXEL_BUFFERS(X)  \
    KR_GL_GLSL(X)

// The entry points, process-wide: valid once the window's capability tests have passed their
// group, null before and after a failed test.
#define KR_GL_DECLARE(type, name) extern type kr##name;
KR_GL_ALL(KR_GL_DECLARE)
#undef KR_GL_DECLARE

enum class krGLGroup { minimum, occlusion, pointSprites, vertexAttributes, vertexBuffers, pixelBuffers, glsl };

namespace krGL {
    // Whether the name occurs in the extension string of the current context.
    bool hasExtension(const char* name);
    // Tests a group: all its extensions present and every entry point loaded. On failure the
    // group's entry points are null again.
    bool loadGroup(krGLGroup group);
    // The string of the current context for a GL_VERSION-like name, "" when there is none.
    const char* string(GLenum name);
    // Depth writes on, then colour to `background` with alpha 0, depth to 1, and all buffers
    // cleared: how every frame and every off-screen scene starts.
    void clearFrame(const krColor& background);
}
