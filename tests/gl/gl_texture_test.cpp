// Textures: colour through a material, the fallback for missing and broken files with their
// reports, sharing by name, block formats, and the filter fixed when a texture comes in.
#include "gl_scene.h"
#include "script/krVariant.h"

using glContent::MeshMaker;
using glContent::solidTexture;
using glTesting::reports;
using GLTextures = glTesting::Scene;

namespace {
const krVector3 ahead(0, 0, -5);

MeshMaker textured(const std::string& name) {
    MeshMaker m;
    m.material().textures[krTextureDiffuse] = name;
    m.square({}, 4);
    return m;
}

GLint levelParameter(GLuint texture, GLenum name) {
    glBindTexture(GL_TEXTURE_2D, texture);
    GLint value = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, name, &value);
    return value;
}

GLfloat anisotropyOf(GLuint texture) {
    glBindTexture(GL_TEXTURE_2D, texture);
    GLfloat value = 0;
    glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, &value);
    return value;
}
}  // namespace

TEST_F(GLTextures, ASquareShowsItsTextureAndSharesIt) {
    files.write("t/orange.dds", solidTexture(0xFFC86410));
    ASSERT_TRUE(openScene());
    MeshMaker m = textured("t/orange.dds");
    krObject* first = object(m, ahead);
    krObject* second = object(m, {20, 0, -5});
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xC86410u);
    EXPECT_TRUE(reports().errors.empty());
    // One texture for both objects; it goes with the last of them.
    EXPECT_EQ(textures()->useCount("t/orange.dds"), 2);
    const GLuint name = textures()->load("t/orange.dds");
    textures()->release("t/orange.dds");
    remove(first);
    EXPECT_EQ(textures()->useCount("t/orange.dds"), 1);
    EXPECT_TRUE(glIsTexture(name));
    remove(second);
    EXPECT_EQ(textures()->useCount("t/orange.dds"), 0);
    EXPECT_FALSE(glIsTexture(name));
    // Names that are not in the table, the empty one among them, change nothing.
    textures()->release("t/orange.dds");
    textures()->release("");
    EXPECT_EQ(textures()->load(""), 0u);
    EXPECT_EQ(textures()->useCount(""), 0);
}

TEST_F(GLTextures, AMissingTextureShowsTheFallbackAndIsTriedAgainNextTime) {
    // A loose file beats the stock pack's entry.
    files.write("textures/default.dds", solidTexture(0xFF3060F0));
    ASSERT_TRUE(openScene());
    EXPECT_TRUE(reports().errors.empty());
    MeshMaker m = textured("t/missing.dds");
    object(m, ahead);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0x3060F0u);
    const std::string missing = "File \"t/missing.dds\" not found!";
    EXPECT_EQ(reports().errors, std::vector<std::string>{missing});
    EXPECT_EQ(textures()->useCount("t/missing.dds"), 0);
    // The fallback is handed out without a count of its own.
    EXPECT_EQ(textures()->useCount(krTextures_OGL::defaultName), 1);
    object(m, ahead);
    EXPECT_EQ(reports().errorCount(missing), 2);
}

TEST_F(GLTextures, BrokenFilesFallBackWithTheirReports) {
    files.write("textures/default.dds", solidTexture(0xFF3060F0));
    files.write("t/565.dds", glContent::texture565(4, 4));
    files.write("t/dxt2.dds", glContent::blockTexture("DXT2", 4, 4, 16));
    files.write("t/short.dds", std::string("DDS ") + std::string(123, '\0'));
    files.write("t/empty.dds", "");
    ASSERT_TRUE(openScene());
    const GLuint fallback = textures()->getDefaultTexture();
    ASSERT_NE(fallback, 0u);
    EXPECT_EQ(textures()->load("t/565.dds"), fallback);
    EXPECT_EQ(reports().errors, std::vector<std::string>{"Invalid texture file: 't/565.dds'"});
    reports().errors.clear();
    EXPECT_EQ(textures()->load("t/dxt2.dds"), fallback);
    EXPECT_EQ(reports().errors, (std::vector<std::string>{"DXT2 texture format is not supported!",
                                                          "Invalid texture file: 't/dxt2.dds'"}));
    reports().errors.clear();
    EXPECT_EQ(textures()->load("t/short.dds"), fallback);
    EXPECT_EQ(reports().errors, std::vector<std::string>{"Invalid texture file: 't/short.dds'"});
    reports().errors.clear();
    // An empty file is no texture, and nothing more is said about it.
    EXPECT_EQ(textures()->load("t/empty.dds"), fallback);
    EXPECT_TRUE(reports().errors.empty());

    MeshMaker m = textured("t/565.dds");
    object(m, ahead);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0x3060F0u);
}

TEST_F(GLTextures, WithoutAFallbackFailedTexturesDrawUntextured) {
    files.write("textures/default.dds", "");
    ASSERT_TRUE(openScene());
    EXPECT_EQ(textures()->getDefaultTexture(), 0u);
    MeshMaker m = textured("t/missing.dds");
    object(m, ahead);
    ASSERT_TRUE(frame());
    EXPECT_EQ(pixel(32, 24), 0xFFFFFFu);
}

TEST_F(GLTextures, BlockFormatsUploadTheTopLevelAndTheDriverMakesTheRest) {
    // Five pixels across take two blocks of eight bytes.
    files.write("t/dxt1.dds", glContent::blockTexture("DXT1", 5, 1, 16));
    files.write("t/dxt5.dds", glContent::blockTexture("DXT5", 8, 8, 64));
    ASSERT_TRUE(openScene());
    const GLuint dxt1 = textures()->load("t/dxt1.dds");
    ASSERT_NE(dxt1, textures()->getDefaultTexture());
    EXPECT_EQ(levelParameter(dxt1, GL_TEXTURE_WIDTH), 5);
    EXPECT_EQ(levelParameter(dxt1, GL_TEXTURE_COMPRESSED_IMAGE_SIZE), 16);
    EXPECT_EQ(levelParameter(dxt1, GL_TEXTURE_INTERNAL_FORMAT), GL_COMPRESSED_RGBA_S3TC_DXT1_EXT);
    const GLuint dxt5 = textures()->load("t/dxt5.dds");
    EXPECT_EQ(levelParameter(dxt5, GL_TEXTURE_COMPRESSED_IMAGE_SIZE), 64);
    // The driver's own smaller levels are there: 8, 4, 2, 1.
    glBindTexture(GL_TEXTURE_2D, dxt5);
    GLint smallest = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 3, GL_TEXTURE_WIDTH, &smallest);
    EXPECT_EQ(smallest, 1);
    EXPECT_TRUE(reports().errors.empty());
}

TEST_F(GLTextures, TheFilterIsTheOneSetWhenTheTextureCameIn) {
    files.write("t/a.dds", solidTexture(0xFFFFFFFF));
    files.write("t/b.dds", solidTexture(0xFFFFFFFF));
    ASSERT_TRUE(openScene());
    GLfloat largest = 0;
    glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &largest);
    if (largest < 4) GTEST_SKIP() << "no anisotropic filtering of 4";
    glTesting::set(video, "anisotropy", new krVInt(2));
    const GLuint a = textures()->load("t/a.dds");
    glTesting::set(video, "anisotropy", new krVInt(4));
    const GLuint b = textures()->load("t/b.dds");
    EXPECT_EQ(anisotropyOf(a), 2.0f);
    EXPECT_EQ(anisotropyOf(b), 4.0f);
}
