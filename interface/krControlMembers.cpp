// The script interface of controls and the desktop. Methods act only with their exact argument
// counts; any other count falls through to the module, and so ends as an event of that name.
// Sizes, positions and times that are not finite numbers are refused: the geometry would carry
// them into every child.
#include <cmath>

#include "core/krMain.h"
#include "interface/krControl.h"
#include "script/krBlock.h"
#include "script/krClassInfo.h"
#include "script/krVBound.h"
#include "script/krVObject.h"

namespace {

const krMemberInfo controlMembers[] = {
    {"setRect", krCall, "(left, top, width, height)", "the rectangle, relative to the parent control"},
    {"setPosition", krCall, "(left, top)", "relative to the parent control"},
    {"setSize", krCall, "(width, height)", "the size, from the top left corner"},
    {"setBorder", krCall, "(colour, width, sides?)", "sides from BORDER_TOP, BORDER_BOTTOM, BORDER_LEFT, BORDER_RIGHT; all without"},
    {"setFont", krCall, "(name, colour, width, height)", "the font of the text and its size"},
    {"setTextShadow", krCall, "(colour, dx, dy)", "a shadow behind the text"},
    {"blend", krCall, "(target, seconds)", "fades the visibility to the target; 0 ends hidden"},
    {"setArg", krCall, "(index, value)", "argument %0 to %9 of the text; a bound value keeps following its field"},
    {"getArg", krCall, "(index)", "the argument, or nothing"},
    {"setMargins", krCall, "(left, top, right, bottom)", "the text's distance from the edges"},
    {"left", krRead | krWrite, "float", "relative to the parent control"},
    {"top", krRead | krWrite, "float", "relative to the parent control"},
    {"width", krRead | krWrite, "float", "across, in the desktop's units"},
    {"height", krRead | krWrite, "float", "down, in the desktop's units"},
    {"active", krRead | krWrite, "bool", "in the chain that keys go down"},
    {"text", krRead | krWrite, "string", "one line; %0 to %9 show the arguments, %% a percent sign"},
    {"dragTarget", krRead | krWrite, "object", "the control that a left-button drag on this one moves"},
    {"visibleLines", krRead, "int", "whole lines of the font in the height"},
    {"visibility", krRead | krWrite, "float", "multiplies the alpha of everything drawn"},
    {"canActivate", krRead | krWrite, "bool", "false: clicks activate the parent instead"},
    {"clickThrough", krRead | krWrite, "bool", "the mouse search passes over it and its children"},
    {"textAlign", krRead | krWrite, "int", "ALIGN_ flags"},
    {"background", krWrite, "colour", "the fill, also while hot; clears the image; write-only, as fill and image share it"},
    {"hotBackground", krWrite, "colour", "the fill under the mouse or while active; write-only"},
    {"imageColor", krWrite, "colour", "tints the image; write-only"},
    {"image", krWrite, "string", "a texture drawn as the fill; write-only"},
};

const krEventInfo controlEvents[] = {
    {"mouseDown_<key>", "()", "a mouse button went down on the control"},
    {"mouseUp_<key>", "()", "the button went up; at the control that caught it going down"},
    {"keyDown_<key>", "()", "a key reached the control down the active chain"},
    {"keyDown", "(key name)", "right after keyDown_<key>"},
    {"keyUp_<key>", "()", "a key went up"},
    {"activate", "()", "the control became active"},
    {"deactivate", "()", "the control stopped being active"},
};

const krMemberInfo desktopMembers[] = {
    {"mouse", krRead | krWrite, "object", "the control that serves as pointer; it takes no clicks"},
};

bool finite(std::initializer_list<float> values) {
    for (float f : values)
        if (!std::isfinite(f)) return false;
    return true;
}

krColor colorOf(krVariant* v) { return krColor(static_cast<uint32_t>(v->toInt())); }

}  // namespace

const krClassInfo krControl::info = {"krControl", "krModule", "new_control", controlMembers, controlEvents,
                                     "a rectangle with fill, image, border and a line of text"};
const krClassInfo krDesktop::info = {"krDesktop", "krControl", "new_desktop", desktopMembers, {},
                                     "the root of a tree of controls: it owns the mouse"};

krVariant* krControl::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    const size_t n = args.size();
    auto f = [&](size_t i) { return args[i]->toFloat(); };
    if (member == "setRect" && n == 4) {
        if (!finite({f(0), f(1), f(2), f(3)})) return reportError(caller, "setRect needs finite numbers");
        setRect(f(0), f(1), f(2), f(3));
        return nullptr;
    }
    if ((member == "setPosition" || member == "setSize") && n == 2) {
        if (!finite({f(0), f(1)})) return reportError(caller, member + " needs finite numbers");
        if (member == "setPosition") setPosition(f(0), f(1));
        else setSize(f(0), f(1));
        return nullptr;
    }
    if (member == "setBorder" && (n == 2 || n == 3)) {
        if (!finite({f(1)})) return reportError(caller, "setBorder needs a finite width");
        setBorder(colorOf(args[0]), f(1), n == 3 ? args[2]->toInt() : krBorderTop | krBorderBottom | krBorderLeft | krBorderRight);
        return nullptr;
    }
    if (member == "setFont" && n == 4) {
        if (!finite({f(2), f(3)})) return reportError(caller, "setFont needs a finite size");
        setFont(args[0]->toString(), colorOf(args[1]), f(2), f(3));
        return nullptr;
    }
    if (member == "setTextShadow" && n == 3) {
        if (!finite({f(1), f(2)})) return reportError(caller, "setTextShadow needs finite numbers");
        setTextShadow(colorOf(args[0]), f(1), f(2));
        return nullptr;
    }
    if (member == "blend" && n == 2) {
        if (!finite({f(0), f(1)})) return reportError(caller, "blend needs finite numbers");
        blendTo(f(0), f(1));
        return nullptr;
    }
    if (member == "setArg" && n == 2) {
        setArg(args[0]->toInt(), args[1]);
        return nullptr;
    }
    if (member == "getArg" && n == 1) {
        const int32_t i = args[0]->toInt();
        if (i < 0 || i >= argumentCount) return nullptr;
        krVariant* a = arguments[static_cast<size_t>(i)];
        if (a) a->addRef();
        return a;
    }
    if (member == "setMargins" && n == 4) {
        if (!finite({f(0), f(1), f(2), f(3)})) return reportError(caller, "setMargins needs finite numbers");
        for (size_t i = 0; i < 4; ++i) margins[i] = f(i);
        updateTextLayout();
        return nullptr;
    }
    if (member == "left") return new krVFloat(left);
    if (member == "top") return new krVFloat(top);
    if (member == "width") return new krVFloat(width);
    if (member == "height") return new krVFloat(height);
    if (member == "active") return new krVBool(active);
    if (member == "text") return new krVString(text);
    if (member == "dragTarget") return new krVObject(krScriptObject::fromHandle(dragTarget));
    if (member == "visibleLines") {
        const float h = textData.size.y;
        return new krVInt(h > 0 && std::isfinite(height / h) ? static_cast<int32_t>(std::floor(height / h)) : 0);
    }
    if (member == "visibility") return new krVFloat(visibility);
    if (member == "canActivate") return new krVBool(canActivate);
    if (member == "clickThrough") return new krVBool(clickThrough);
    if (member == "textAlign") return new krVInt(textAlign);
    return krModule::getMember(member, caller, args);
}

void krControl::setMember(const std::string& member, krVariant* value) {
    const float f = value->toFloat();
    const bool geometry = member == "left" || member == "top" || member == "width" || member == "height";
    if (geometry && !std::isfinite(f)) {
        krMain::instance()->errorMsg(member + " of a control must be a finite number, not " + value->toString());
    } else if (member == "left") {
        setPosition(f, top);
    } else if (member == "top") {
        setPosition(left, f);
    } else if (member == "width") {
        setSize(f, height);
    } else if (member == "height") {
        setSize(width, f);
    } else if (member == "active") {
        setActiveState(value->toBool());
    } else if (member == "text") {
        setText(value->toString());
    } else if (member == "dragTarget") {
        auto* c = dynamic_cast<krControl*>(krScriptObject::fromHandle(value->toInt()));
        dragTarget = c ? c->handle() : 0;
    } else if (member == "visibility") {
        if (std::isfinite(f)) setVisibility(f);
    } else if (member == "canActivate") {
        canActivate = value->toBool();
    } else if (member == "clickThrough") {
        clickThrough = value->toBool();
    } else if (member == "textAlign") {
        textAlign = value->toInt();
        updateTextLayout();
    } else if (member == "background") {
        setBackground(colorOf(value), true);
    } else if (member == "hotBackground") {
        setHotBackground(colorOf(value));
    } else if (member == "imageColor") {
        setBackground(colorOf(value), false);
    } else if (member == "image") {
        setImage(value->toString(), 255);
    } else {
        krModule::setMember(member, value);
    }
}

krVariant* krDesktop::getMember(const std::string& member, krBlock* caller, const krArgs& args) {
    if (member == "mouse") return new krVObject(krScriptObject::fromHandle(mouse));
    return krControl::getMember(member, caller, args);
}

void krDesktop::setMember(const std::string& member, krVariant* value) {
    if (member == "mouse") setMouse(dynamic_cast<krControl*>(krScriptObject::fromHandle(value->toInt())));
    else krControl::setMember(member, value);
}
