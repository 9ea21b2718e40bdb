// Companion scripts of objects: the optional script beside a mesh file, run before the meshes
// are read so that it can bind the load's events, and owned by the object from then on.
#include <utility>
#include <vector>

#include "core/krFile.h"
#include "core/krMain.h"
#include "render/krObject.h"
#include "script/krScript.h"
#include "script/krScripting.h"

namespace {

// An object can go while its own script runs: a handler that deletes the object it belongs to,
// or a reload started from the script's main code. Deleting a running script would pull its
// code from under it, so it waits here, with the object value it was given, and goes at the next
// frame or at teardown. The grave is a module below the script host for that reason.
class krScriptGrave : public krModule {
public:
    explicit krScriptGrave(krModule* owner) : krModule(owner) {}
    ~krScriptGrave() override {
        bury();
        if (grave == this) grave = nullptr;
    }
    const char* className() const override { return "krScriptGrave"; }

    bool update(float dt) override {
        bury();
        return krModule::update(dt);
    }

    void deinit() override {
        bury();
        if (grave == this) grave = nullptr;
        krModule::deinit();
    }

    static void add(krScript* script, krVariant* self) {
        if (!grave) {
            krModule* owner = krScripting::instance();
            if (!owner) owner = krMain::instance();
            grave = new krScriptGrave(owner);
            grave->attach();
        }
        grave->waiting.emplace_back(script, self);
    }

private:
    // Scripts still running stay for the next time; at teardown none is.
    void bury() {
        for (size_t i = 0; i < waiting.size();) {
            if (waiting[i].first->isRunning()) {
                ++i;
                continue;
            }
            auto [script, self] = waiting[i];
            waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(i));
            delete script;
            self->release();
        }
    }

    static krScriptGrave* grave;
    std::vector<std::pair<krScript*, krVariant*>> waiting;
};

krScriptGrave* krScriptGrave::grave = nullptr;

}  // namespace

void krObject::dropScript() {
    krScript* old = script;
    if (!old) return;
    script = nullptr;
    if (old->isRunning()) krScriptGrave::add(old, self->addRef());
    else delete old;
}

void krObject::loadScript(const std::string& fileName) {
    // Most meshes have no script beside them: a missing one is no error.
    krFile file(fileName, false);
    if (!file.data) return;
    dropScript();
    auto* s = new krScript();
    script = s;
    s->setHost(krScripting::instance());
    s->setFile(fileName);
    s->load(file.data);
    // The script's $_ is the object it belongs to.
    s->getCurrentValues().push_back(self);
    // The main code may drop or replace this very script; only the local pointer is safe here.
    if (krVariant* result = s->eval()) result->release();
}
