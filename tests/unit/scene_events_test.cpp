// Load-time events bound from scripts: materials changed through their reference arguments,
// sub-objects replaced by a handler's object, and handlers that delete what is being loaded.
#include "scene_testing.h"

using namespace sceneTesting;

namespace {

class SceneEvents : public Scene {
protected:
    // An object "box" with a mesh of material "stone" and a sub-object "lid".
    void writeBoxWithLid(const std::string& file) {
        krChunkWriter w;
        krBeginObject(w, "box", {}, krQuat::identity);
        krWriteMesh(w, cube(1, "stone"));
        krBeginObject(w, "lid", {0, 2, 0}, krQuat::identity);
        krWriteMesh(w, cube(0.5f, "wood"));
        w.end();
        w.end();
        write(file, w.data());
    }
};

}  // namespace

TEST_F(SceneEvents, MaterialHandlerChangesItsReferenceArguments) {
    writeBoxWithLid("box.mesh");
    krScript* s = run(R"(
        $seen = "";
        $o = new_object();
        event $o: material_stone($shader, $texture, $surface) {
            $seen = $shader + "|" + $texture + "|" + $surface;
            $shader = "shaders/rock.shader";
            $texture = "textures/rock.dds";
            $surface = PHYSIC_WATER;
        }
        $o.loadFromFile("box.mesh");
    )");
    EXPECT_EQ(field(s, "seen"), "||1");
    ASSERT_EQ(video->seen.size(), 2u);
    const krMaterial& stone = video->seen[0].materials[0];
    EXPECT_EQ(stone.shader, "shaders/rock.shader");
    EXPECT_EQ(stone.textures[krTextureDiffuse], "textures/rock.dds");
    EXPECT_EQ(stone.surface, krSurfaceWater);
    // The sub-object's material event goes to the object whose load made it.
    const krMaterial& wood = video->seen[1].materials[0];
    EXPECT_EQ(wood.shader, "");
    EXPECT_EQ(wood.surface, krSurfaceDefault);
    EXPECT_TRUE(reports().empty());
}

TEST_F(SceneEvents, KeptReferenceArgumentsOutliveTheLoadSafely) {
    writeBoxWithLid("box.mesh");
    krScript* s = run(R"(
        $o = new_object();
        event $o: material_stone($shader, $texture, $surface) { GLOBALS["kept"] = $shader; }
        $o.loadFromFile("box.mesh");
        GLOBALS["kept"] = "after";
        $after = GLOBALS["kept"];
    )");
    EXPECT_EQ(field(s, "after"), "after");
}

TEST_F(SceneEvents, SubObjectHandlerSuppliesTheObject) {
    write("parts/box.mesh", "");
    writeBoxWithLid("parts/box.mesh");
    krScript* s = run(R"(
        $o = new_object();
        $o.sortAlpha = true;
        $spare = new_object($o);
        $loadedName = "";
        event $o: subObj_lid() { return $spare; }
        event $o: loaded_lid($sub) { $loadedName = $sub.name; }
        event $spare: loaded() { $spareLoaded = 1; }
        $spareLoaded = 0;
        $o.loadFromFile("parts/box.mesh");
        $same = $o.getObject("lid") == $spare;
    )");
    EXPECT_EQ(field(s, "loadedName"), "lid");
    EXPECT_EQ(field(s, "spareLoaded"), "1");
    EXPECT_EQ(field(s, "same"), "true");
    auto* o = dynamic_cast<krObject*>(video->seen[0].module);
    ASSERT_NE(o, nullptr);
    // No second child was made: the handler's object took the place.
    ASSERT_EQ(o->getChildren().size(), 1u);
    auto* lid = dynamic_cast<krObject*>(o->getChildren()[0]);
    EXPECT_EQ(lid->name, "lid");
    EXPECT_EQ(lid->getEventTarget(), o);
    EXPECT_TRUE(lid->sortAlpha);
    EXPECT_EQ(lid->path, "parts/");
    EXPECT_TRUE(lid->isVisible());
    EXPECT_EQ(lid->position, krVector3(0, 2, 0));
}

TEST_F(SceneEvents, SubObjectHandlerCannotHandBackTheLoadingObject) {
    writeBoxWithLid("box.mesh");
    run(R"(
        $o = new_object();
        event $o: subObj_lid() { return $_; }
        $o.loadFromFile("box.mesh");
    )");
    auto* o = dynamic_cast<krObject*>(video->seen[0].module);
    ASSERT_NE(o, nullptr);
    ASSERT_EQ(o->getChildren().size(), 1u);
    EXPECT_NE(o->getChildren()[0], o);
    EXPECT_EQ(dynamic_cast<krObject*>(o->getChildren()[0])->name, "lid");
}

TEST_F(SceneEvents, HandlersMayDeleteWhatIsLoading) {
    writeBoxWithLid("box.mesh");
    krScript* s = run(R"(
        $o = new_object();
        event $o: material_stone() { delete $_; }
        $o.loadFromFile("box.mesh");
        $gone = $o == 0;
    )");
    EXPECT_EQ(field(s, "gone"), "true");
    // The load stopped at the deletion: the lid was never read.
    EXPECT_TRUE(video->seen.empty());
    EXPECT_EQ(root->getChildren().size(), 2u);

    // A companion script whose own handler deletes its object.
    writeBoxWithLid("self.mesh");
    write("self.script", "event $_: loaded() { delete $_; }");
    run(R"( $p = new_object(); $p.loadFromFile("self.mesh"); )");
    EXPECT_TRUE(root->update(0.01f));
    EXPECT_TRUE(reports().empty());
}

TEST_F(SceneEvents, LoadsStartedFromTheCompanionScript) {
    write("again.mesh", objectFile("again", {cube(1)}));
    write("other.mesh", objectFile("other", {cube(2)}));
    write("other.script", "GLOBALS[\"other\"] = 1;");
    // A script that loads another file into its object is replaced while it runs, and must
    // survive that; one that loads its own file again would never end, and is told so.
    write("again.script", R"(
        GLOBALS["runs"] = GLOBALS["runs"] + 1;
        $_.loadFromFile("other.mesh");
        $_.loadFromFile("again.mesh");
    )");
    krScript* s = run(R"(
        GLOBALS["runs"] = 0;
        $o = new_object();
        $o.loadFromFile("again.mesh");
        $runs = GLOBALS["runs"];
        $other = GLOBALS["other"];
        $name = $o.name;
        $script = $o.script;
    )");
    EXPECT_EQ(field(s, "runs"), "1");
    EXPECT_EQ(field(s, "other"), "1");
    EXPECT_EQ(field(s, "name"), "again");
    EXPECT_EQ(field(s, "script"), "other.script");
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0], "Mesh file 'again.mesh' contains itself");
    EXPECT_TRUE(root->update(0.01f));
}
