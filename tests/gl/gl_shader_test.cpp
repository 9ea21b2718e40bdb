// Shaders: the table by file name with its fallback, .shader files and their masks, compile and
// link errors in message boxes, the stock shaders chosen by material flags, per-program and
// per-object uniforms, and the stock lighting with normal maps and tangents.
#include "gl_scene.h"
#include "platform/krWindowSystem.h"
#include "render/krLight.h"
#include "render/opengl/krShader_GLSL.h"
#include "script/krSymbols.h"
#include "script/krVObject.h"

using glContent::MeshMaker;
using glContent::solidTexture;
using glTesting::near;
using glTesting::reports;

namespace {
// A shader of one vertex and one fragment stage that use what the masks ask for.
const char* vertexSource =
    "uniform mat4 matrix;\n"
    "void main() { gl_TexCoord[0] = gl_MultiTexCoord0; gl_Position = gl_ModelViewProjectionMatrix * (matrix * gl_Vertex); }\n";
const char* fragmentSource =
    "uniform sampler2D texture0; uniform float timer; uniform vec3 eyepos;\n"
    "void main() { gl_FragColor = texture2D(texture0, gl_TexCoord[0].st) * timer + vec4(eyepos, 0.0); }\n";
const char* skinVertexSource =
    "uniform mat4 bones[2]; uniform mat4 matrix;\n"
    "void main() { gl_Position = gl_ModelViewProjectionMatrix * (bones[0] * matrix * gl_Vertex); }\n";
const char* plainFragmentSource = "void main() { gl_FragColor = vec4(1.0); }\n";

std::string shaderFile(const char* vertex, const char* fragment, const char* masks) {
    std::string text;
    if (vertex) text += std::string("$vertex = \"") + vertex + "\";\n";
    if (fragment) text += std::string("$fragment = \"") + fragment + "\";\n";
    return text + masks;
}

class GLShaders : public glTesting::Scene {
protected:
    void SetUp() override {
        Scene::SetUp();
        video->glsl = true;
    }

    // Writes s/NAME.shader with sources s/v.glsl and s/f.glsl.
    void shader(const std::string& name, const char* vertex, const char* fragment, const char* masks) {
        files.write("s/" + name + ".shader", shaderFile(vertex, fragment, masks));
    }
    void sources(const char* vertex, const char* fragment) {
        files.write("s/v.glsl", vertex);
        files.write("s/f.glsl", fragment);
    }
};

template <typename F>
F entry(const char* name) {
    return reinterpret_cast<F>(krWindowSystem::procAddress(name));
}

GLint samplerValue(GLuint program, GLint location) {
    GLint value = -1;
    entry<PFNGLGETUNIFORMIVARBPROC>("glGetUniformivARB")(program, location, &value);
    return value;
}

GLfloat floatValue(GLuint program, GLint location) {
    GLfloat value[16] = {};
    entry<PFNGLGETUNIFORMFVARBPROC>("glGetUniformfvARB")(program, location, value);
    return value[0];
}

krMatrix matrixValue(GLuint program, GLint location) {
    krMatrix m(false);
    entry<PFNGLGETUNIFORMFVARBPROC>("glGetUniformfvARB")(program, location, m.m);
    return m;
}
}  // namespace

TEST_F(GLShaders, AFailedFileIsReportedOnceAndGivesTheDefault) {
    shader("half", "v", nullptr, "$attributes = POSITION;");
    shader("lost", "v", "nowhere", "");
    sources(vertexSource, fragmentSource);
    ASSERT_TRUE(openScene());
    ASSERT_TRUE(video->glsl);
    krShader_OGL* fallback = shaders()->getDefaultShader();
    EXPECT_STREQ(fallback->className(), "krShader_GLSL");
    EXPECT_EQ(shaders()->get("s/missing.shader"), fallback);
    EXPECT_EQ(shaders()->get("s/missing.shader"), fallback);
    EXPECT_EQ(reports().errors, std::vector<std::string>{"File \"s/missing.shader\" not found!"});
    reports().errors.clear();
    // A file that names only one stage is no shader, and says nothing.
    EXPECT_EQ(shaders()->get("s/half.shader"), fallback);
    EXPECT_TRUE(reports().errors.empty());
    // A missing stage is reported by the file layer, once.
    EXPECT_EQ(shaders()->get("s/lost.shader"), fallback);
    EXPECT_EQ(shaders()->get("s/lost.shader"), fallback);
    EXPECT_EQ(reports().errors, std::vector<std::string>{"File \"s/nowhere.glsl\" not found!"});
    EXPECT_TRUE(reports().boxes.empty());
}

TEST_F(GLShaders, WithoutGLSLNoFileIsOpened) {
    video->glsl = false;
    ASSERT_TRUE(openScene());
    krShader_OGL* fallback = shaders()->getDefaultShader();
    EXPECT_STREQ(fallback->className(), "krShader_OGL");
    EXPECT_EQ(shaders()->get("s/missing.shader"), fallback);
    EXPECT_EQ(video->selectShader(krMaterialNormalMapped, "", false), fallback);
    EXPECT_TRUE(reports().errors.empty());
}

TEST_F(GLShaders, ThePaletteSizeChoosesTheClassAndTheMasksTheUniforms) {
    shader("plain", "v", "f", "$attributes = POSITION | TEXCOORD0; $textures = TEXTURE0 | TEXTURE5;\n"
                              "$parameters = BONEx0 | MATRIX | EYEPOS | SHADER_TIMER;");
    shader("skin", "skin", "plain", "$parameters = BONEx2 | MATRIX;");
    sources(vertexSource, fragmentSource);
    files.write("s/skin.glsl", skinVertexSource);
    files.write("s/plain.glsl", plainFragmentSource);
    ASSERT_TRUE(openScene());
    auto* plain = dynamic_cast<krShader_GLSL*>(shaders()->get("s/plain.shader"));
    ASSERT_NE(plain, nullptr);
    EXPECT_STREQ(plain->className(), "krShader_GLSL");
    EXPECT_EQ(plain->attributes, 0x1000100);
    EXPECT_EQ(plain->textures, 0x21);
    EXPECT_EQ(plain->parameters, 0x700);
    EXPECT_GE(plain->texture0, 0);
    EXPECT_EQ(plain->texture1, -1);
    EXPECT_GE(plain->matrix, 0);
    EXPECT_GE(plain->eyepos, 0);
    EXPECT_GE(plain->timerUniform, 0);
    auto* skin = dynamic_cast<krSkinShader_GLSL*>(shaders()->get("s/skin.shader"));
    ASSERT_NE(skin, nullptr);
    EXPECT_GE(skin->bones, 0);
    EXPECT_EQ(skin->texture0, -1);
    EXPECT_EQ(skin->eyepos, -1);
    EXPECT_TRUE(reports().errors.empty());
    EXPECT_TRUE(reports().boxes.empty());
}

TEST_F(GLShaders, CompileAndLinkErrorsShowTheirLogsUnderTheirTitles) {
    shader("vertex", "broken", "f", "");
    shader("fragment", "v", "broken", "");
    shader("link", "nomain", "f", "");
    sources(vertexSource, fragmentSource);
    files.write("s/broken.glsl", "void main() { this is not GLSL }\n");
    files.write("s/nomain.glsl", "vec4 unused() { return vec4(0.0); }\n");
    ASSERT_TRUE(openScene());
    krShader_OGL* fallback = shaders()->getDefaultShader();
    EXPECT_EQ(shaders()->get("s/vertex.shader"), fallback);
    EXPECT_EQ(shaders()->get("s/fragment.shader"), fallback);
    EXPECT_EQ(shaders()->get("s/link.shader"), fallback);
    EXPECT_EQ(reports().boxTitles, (std::vector<std::string>{"Vertex Shader Compile Error",
                                                             "Fragment Shader Compile Error", "Linking Error"}));
    for (const std::string& log : reports().boxes) EXPECT_FALSE(log.empty());
    // The failed shaders are gone from the table's children: only the default is left.
    EXPECT_EQ(shaders()->getChildren().size(), 1u);
}

TEST_F(GLShaders, ASecondBindOfTheSameShaderSendsOnlyTheMatrix) {
    shader("plain", "v", "f", "$textures = TEXTURE0; $parameters = MATRIX | EYEPOS | SHADER_TIMER;");
    sources(vertexSource, fragmentSource);
    ASSERT_TRUE(openScene());
    auto* s = dynamic_cast<krShader_GLSL*>(shaders()->get("s/plain.shader"));
    ASSERT_NE(s, nullptr);
    krModule* a = module();
    krModule* b = module();
    a->setMatrix(krMatrix::fromTranslation({1, 2, 3}));
    b->setMatrix(krMatrix::fromTranslation({4, 5, 6}));
    s->timer = 1;
    shaders()->bind(s, a);
    EXPECT_EQ(shaders()->getCurrent(), s);
    EXPECT_EQ(samplerValue(s->program, s->texture0), 0);
    EXPECT_EQ(floatValue(s->program, s->timerUniform), 1.0f);
    EXPECT_EQ(matrixValue(s->program, s->matrix).m[12], 1.0f);

    entry<PFNGLUNIFORM1IARBPROC>("glUniform1iARB")(s->texture0, 3);
    s->timer = 2;
    shaders()->bind(s, b);
    EXPECT_EQ(samplerValue(s->program, s->texture0), 3);
    EXPECT_EQ(floatValue(s->program, s->timerUniform), 1.0f);
    EXPECT_EQ(matrixValue(s->program, s->matrix).m[13], 5.0f);

    // After an unbind the program counts as changed again.
    shaders()->unbind();
    EXPECT_EQ(shaders()->getCurrent(), nullptr);
    shaders()->bind(s, b);
    EXPECT_EQ(samplerValue(s->program, s->texture0), 0);
    EXPECT_EQ(floatValue(s->program, s->timerUniform), 2.0f);
    shaders()->unbind();
}

TEST_F(GLShaders, MaterialFlagsChooseTheStockShaders) {
    ASSERT_TRUE(openScene());
    krShaders_OGL* table = shaders();
    const int32_t S = krMaterialSpecular, N = krMaterialNormalMapped, M = krMaterialSpecularMapped;
    const struct {
        int32_t flags;
        const char* plain;
        const char* skinned;
    } cases[] = {
        {0, nullptr, "shaders/skin.shader"},
        {N, "shaders/normal.shader", "shaders/normal_skin.shader"},
        {S, "shaders/spec.shader", "shaders/spec_skin.shader"},
        {S | N, "shaders/normal_spec.shader", "shaders/normal_spec_skin.shader"},
        {S | M, "shaders/specmap.shader", "shaders/specmap_skin.shader"},
        {S | M | N, "shaders/normal_specmap.shader", "shaders/normal_specmap_skin.shader"},
        // A specular map counts only on a specular material.
        {M, nullptr, "shaders/skin.shader"},
        {M | N, "shaders/normal.shader", "shaders/normal_skin.shader"},
    };
    for (const auto& c : cases) {
        krShader_OGL* plain = c.plain ? table->get(c.plain) : table->getDefaultShader();
        EXPECT_EQ(video->selectShader(c.flags, "", false), plain) << c.flags;
        // Skinned shaders only with skinning on the graphics card, and never for blended ones.
        EXPECT_EQ(video->selectShader(c.flags, "", true), plain) << c.flags;
        video->hardwareSkinning = true;
        krShader_OGL* skinned = video->selectShader(c.flags, "", true);
        EXPECT_EQ(skinned, table->get(c.skinned)) << c.flags;
        EXPECT_STREQ(skinned->className(), "krSkinShader_GLSL") << c.flags;
        EXPECT_EQ(video->selectShader(c.flags | krMaterialBlended, "", true), plain) << c.flags;
        video->hardwareSkinning = false;
        if (c.plain) {
            EXPECT_STREQ(plain->className(), "krShader_GLSL") << c.flags;
        }
    }
    // A material's own shader comes first.
    EXPECT_EQ(video->selectShader(N, "shaders/spec.shader", false), table->get("shaders/spec.shader"));
    // Every stock shader compiled and linked.
    EXPECT_TRUE(reports().boxes.empty());
    EXPECT_TRUE(reports().errors.empty());
}

TEST_F(GLShaders, TheStockNormalMapBendsTheLightAlongTheTangents) {
    files.write("t/white.dds", solidTexture(0xFFFFFFFF));
    files.write("t/flat.dds", solidTexture(0xFF8080FF));
    files.write("t/along_u.dds", solidTexture(0xFFFF8080));
    files.write("t/towards_top.dds", solidTexture(0xFF80FF80));
    ASSERT_TRUE(openScene());
    auto* light = new krLight(video);
    light->attach();
    light->ambient = krColorF(0, 0, 0, 1);
    light->specular = krColorF(0, 0, 0, 1);
    auto show = [&](const char* normalMap, const krVector3& lightAt) {
        light->position = lightAt;
        MeshMaker m;
        krMaterial& material = m.material(0, 255, krMaterialNormalMapped);
        // Ambient a quarter, under the scene's 0.8; diffuse a half.
        material.ambient = krColor(64, 64, 64, 255);
        material.diffuse = krColor(128, 128, 128, 255);
        material.emission = krColor(0, 0, 0, 255);
        material.textures[krTextureDiffuse] = "t/white.dds";
        material.textures[krTextureNormal] = normalMap;
        m.square({}, 4);
        krObject* o = object(m, {0, 0, -5});
        EXPECT_TRUE(frame());
        remove(o);
        return static_cast<int>(glTesting::red(pixel(32, 24)));
    };
    const krVector3 front(0, 0, 100), right(100, 0, -5), left(-100, 0, -5), above(0, 100, -5);
    // Ambient alone is 0.2 of white, with the light straight on 0.7.
    EXPECT_LE(near(show("t/flat.dds", front), 179), 3);
    EXPECT_LE(near(show("t/flat.dds", right), 51), 3);
    // A map that leans along u faces the light on the right, and turns from the one on the left.
    EXPECT_LE(near(show("t/along_u.dds", right), 179), 3);
    EXPECT_LE(near(show("t/along_u.dds", left), 51), 3);
    // Green leans towards the top of the image, which is up on this square.
    EXPECT_LE(near(show("t/towards_top.dds", above), 179), 3);
    EXPECT_TRUE(reports().boxes.empty());
}

TEST_F(GLShaders, TheStockProgramsFogAsFixedFunctionDrawingDoes) {
    files.write("t/white.dds", solidTexture(0xFFFFFFFF));
    files.write("t/flat.dds", solidTexture(0xFF8080FF));
    ASSERT_TRUE(openScene());
    auto* light = new krLight(video);
    light->attach();
    light->position = krVector3(0, 0, 100);
    light->ambient = krColorF(0, 0, 0, 1);
    light->specular = krColorF(0, 0, 0, 1);
    // The plain lit program (specular) and the normal-mapped one.
    for (int32_t flags : {int32_t(krMaterialSpecular), int32_t(krMaterialNormalMapped)}) {
        MeshMaker m;
        krMaterial& material = m.material(0, 255, flags);
        material.ambient = krColor(0, 0, 0, 255);
        material.diffuse = krColor(255, 255, 255, 255);
        material.specular = krColor(0, 0, 0, 255);
        material.emission = krColor(0, 0, 0, 255);
        material.textures[krTextureDiffuse] = "t/white.dds";
        material.textures[krTextureNormal] = "t/flat.dds";
        m.square({}, 4);
        krObject* o = object(m, {0, 0, -5});
        video->fogEnabled = false;
        ASSERT_TRUE(frame());
        const int clear = static_cast<int>(glTesting::red(pixel(32, 24)));
        EXPECT_GT(clear, 200) << flags;
        // Halfway into blue fog.
        video->fogEnabled = true;
        video->fogColor = krColorF(0, 0, 1, 1);
        video->fogStart = 0;
        video->fogEnd = 10;
        ASSERT_TRUE(frame());
        const uint32_t p = pixel(32, 24);
        EXPECT_LE(near(glTesting::red(p), clear / 2), 3) << flags << " " << std::hex << p;
        EXPECT_LE(near(glTesting::blue(p), (clear + 255) / 2), 3) << flags << " " << std::hex << p;
        // Fog off again leaves the programs unfogged.
        video->fogEnabled = false;
        ASSERT_TRUE(frame());
        EXPECT_LE(near(glTesting::red(pixel(32, 24)), clear), 1) << flags;
        remove(o);
    }
    EXPECT_TRUE(reports().boxes.empty());
}

TEST_F(GLShaders, AnUntexturedMaterialShowsItsColourThroughTheStockPrograms) {
    ASSERT_TRUE(openScene());
    auto* light = new krLight(video);
    light->attach();
    light->position = krVector3(0, 0, 100);
    light->ambient = krColorF(0, 0, 0, 1);
    light->specular = krColorF(0, 0, 0, 1);
    MeshMaker m;
    krMaterial& material = m.material(0, 255, krMaterialSpecular);
    material.ambient = krColor(0, 0, 0, 255);
    material.diffuse = krColor(0, 255, 0, 255);
    material.specular = krColor(0, 0, 0, 255);
    material.emission = krColor(0, 0, 0, 255);
    m.square({}, 4);
    object(m, {0, 0, -5});
    ASSERT_TRUE(frame());
    const uint32_t p = pixel(32, 24);
    EXPECT_GT(glTesting::green(p), 200u) << std::hex << p;
    EXPECT_LT(glTesting::red(p), 60u) << std::hex << p;
    EXPECT_TRUE(reports().boxes.empty());
}

TEST_F(GLShaders, ShadersDeletedFromUnderTheirObjectsStayUsable) {
    files.write("t/white.dds", solidTexture(0xFFFFFFFF));
    ASSERT_TRUE(openScene());
    MeshMaker m;
    krMaterial& material = m.material(0xFFFFFF, 255, krMaterialNormalMapped);
    material.textures[krTextureDiffuse] = "t/white.dds";
    m.square({}, 4);
    object(m, {0, 0, -5});
    ASSERT_TRUE(frame(0.5f));
    krShader_OGL* normal = shaders()->get("shaders/normal.shader");
    // Its clock runs with the tree.
    EXPECT_GE(normal->timer, 0.5f);
    normal->deinit();
    normal->release();
    ASSERT_TRUE(frame());
    // The table loads the file anew for whoever asks next.
    EXPECT_NE(shaders()->get("shaders/normal.shader"), normal);
    remove(shaders());
    EXPECT_EQ(video->getShaders(), nullptr);
    object(m, {0, 0, -4});
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
    remove(textures());
    object(m, {0, 0, -3});
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
}

// A .shader script runs while an item is being made for a mesh; it may delete whatever that work
// stands on. Each case ends with no item, the rest of the engine whole, and (under the address
// sanitizer) no access to freed memory.
class GLShaderScripts : public GLShaders {
protected:
    // Loads a mesh whose one material asks for a shader that deletes GLOBALS["victim"].
    void loadWithShaderDeleting(krModule* victim) {
        shader("evil", "v", "f", "delete(GLOBALS[\"victim\"]);");
        sources(vertexSource, fragmentSource);
        auto* value = new krVObject(victim);
        krSymbols::findConstant("GLOBALS")->setIndex("victim", value);
        value->release();
        victimHandle = victim->handle();
        MeshMaker m;
        m.material().shader = "s/evil.shader";
        m.square({}, 4);
        object(m, {0, 0, -5});
    }
    bool victimGone() const { return krScriptObject::fromHandle(victimHandle) == nullptr; }
    int32_t victimHandle = 0;
};

TEST_F(GLShaderScripts, DeletingTheWindow) {
    ASSERT_TRUE(openScene());
    loadWithShaderDeleting(window);
    EXPECT_TRUE(victimGone());
    EXPECT_EQ(root->getChildren().size(), 1u) << "only the script host is left";
}

TEST_F(GLShaderScripts, DeletingTheVideo) {
    ASSERT_TRUE(openScene());
    loadWithShaderDeleting(video);
    EXPECT_TRUE(victimGone());
    EXPECT_TRUE(frame());
}

TEST_F(GLShaderScripts, DeletingTheShaderTable) {
    ASSERT_TRUE(openScene());
    loadWithShaderDeleting(shaders());
    EXPECT_TRUE(victimGone());
    EXPECT_EQ(video->getShaders(), nullptr);
    // The object's item was made without the table and draws with fixed-function state.
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
}

TEST_F(GLShaderScripts, DeletingTheObjectsOwner) {
    ASSERT_TRUE(openScene());
    loadWithShaderDeleting(scene);
    EXPECT_TRUE(victimGone());
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0u);
}
