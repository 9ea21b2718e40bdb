// The window test harness.
#include "gl_testing.h"

#include "krProgram.h"

namespace glTesting {

Reports& reports() {
    static Reports r;
    return r;
}

namespace {
void observe(const char* event, const std::string& text) {
    if (std::strcmp(event, "errorMsg") == 0) reports().errors.push_back(text);
    else reports().infos.push_back(text);
}

// No test may ever wait on a real box.
void box(const std::string& text, const std::string& title) {
    reports().boxes.push_back(text);
    reports().boxTitles.push_back(title);
}

char programName[] = "kerrin_gl_tests";
char* programArgs[] = {programName, nullptr};
}

bool PixelProbe::update(float) {
    auto* w = dynamic_cast<krWindow*>(owner);
    width = w->getWidth();
    height = w->getHeight();
    pixels.assign(static_cast<size_t>(width * height * 4), 0);
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return true;
}

QuadItem::QuadItem(krModule* m, krVideo_OGL* v, Route r, krColorF c, float s)
    : krVideoItem_OGL(m, true, v), route(r), color(c), size(s), part(this) {}

std::vector<const QuadItem*>& QuadItem::drawOrder() {
    static std::vector<const QuadItem*> order;
    return order;
}

void QuadItem::draw() {
    switch (route) {
    case direct:
        drawQuad(false);
        break;
    case opaque:
        part.sortAs(shader);
        video->queueOpaque(&part);
        break;
    case alpha: {
        // The key is the squared distance of the centre from the eye.
        const krVector3 centre = translation(module->getMatrix());
        video->queueAlpha(&part, distanceSquared(centre, video->getEyeCopy()));
        break;
    }
    case glow:
        video->queueGlow(&part);
        break;
    }
}

void QuadItem::drawQuad(bool queued) {
    if (queued) drawOrder().push_back(this);
    glPushMatrix();
    glMultMatrixf(module->getMatrix().m);
    if (lit) {
        glEnable(GL_LIGHTING);
        glEnable(GL_COLOR_MATERIAL);
        glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    } else {
        glDisable(GL_LIGHTING);
    }
    glColor4f(color.r, color.g, color.b, color.a);
    const float h = size / 2;
    glBegin(GL_QUADS);
    glNormal3f(0, 0, 1);
    glVertex3f(-h, -h, 0);
    glVertex3f(h, -h, 0);
    glVertex3f(h, h, 0);
    glVertex3f(-h, h, 0);
    glEnd();
    glDisable(GL_COLOR_MATERIAL);
    glPopMatrix();
}

void QuadItem::Part::drawQuery() {
    if (!query) krglGenQueriesARB(1, &query);
    krglBeginQueryARB(GL_SAMPLES_PASSED_ARB, query);
    quad->drawQuad(true);
    krglEndQueryARB(GL_SAMPLES_PASSED_ARB);
}

bool QuadItem::Part::readQuery() {
    GLuint result = 0;
    krglGetQueryObjectuivARB(query, GL_QUERY_RESULT_ARB, &result);
    quad->samples = result;
    return result > 0;
}

void Window::SetUp() {
    reports() = Reports();
    QuadItem::drawOrder().clear();
    krSystem::clearQuit();
    krSystem::setMessageBoxHook(box);
    krMain::setReportObserver(observe);
    krProgram::start(1, programArgs);
    root = krProgram::root();
    host = krProgram::host();
    window = new RecordingWindow(root);
    window->attach();
    window->setFullscreen(false);
    video = window->getVideo_OGL();
    probe = new PixelProbe(window);
    probe->attach();
    probe->moveToFirst();
}

void Window::TearDown() {
    krProgram::stop();
    krScriptErrors::setErrorHandler(krScriptErrors::defaultHandler());
    krMain::setReportObserver(nullptr);
    krSystem::setMessageBoxHook(nullptr);
    krSystem::clearQuit();
    // Events a test left behind must not reach the next one.
    events::flush();
}

bool Window::open(int32_t width, int32_t height) {
    window->setSize(width, height);
    return window->init();
}

bool Window::frame(float dt) {
    return window->update(dt);
}

krModule* Window::module(krModule* owner) {
    auto* m = new krModule(owner ? owner : root);
    m->attach();
    m->setVisible(true);
    return m;
}

krViewPort* Window::viewport(float x, float y, float width, float height, krModule* shown, bool flat) {
    auto* v = new krViewPort(video);
    v->attach();
    v->setVisible(true);
    v->setSize(x, y, width, height);
    v->setModule(shown);
    v->set2D(flat);
    return v;
}

QuadItem* Window::quad(krModule* owner, QuadItem::Route route, krColorF color, float size) {
    return new QuadItem(owner, video, route, color, size);
}

uint32_t Window::pixel(int32_t x, int32_t y) const {
    const uint8_t* p = probe->at(x, y);
    return static_cast<uint32_t>(p[0]) << 16 | static_cast<uint32_t>(p[1]) << 8 | p[2];
}

}
