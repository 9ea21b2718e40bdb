// What scripts can make and name of the interface subsystem: factories, class tables, constants.
#include "interface/krInterfaceClasses.h"

#include <ctime>

#include "core/krMain.h"
#include "interface/krCameraFlying.h"
#include "interface/krCameraFollow.h"
#include "interface/krClock.h"
#include "interface/krControl.h"
#include "script/krClassInfo.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"

namespace {

krVariant* timer(krBlock*, const krArgs& args) {
    if (args.size() != 1) return nullptr;
    return krFactory::attachAndReturn(new krTimerClock(krMain::instance(), args[0]->toFloat()));
}

krVariant* clock(krBlock*, const krArgs& args) {
    int32_t start;
    if (args.empty()) {
        start = 0;
    } else if (args.size() == 1) {
        start = args[0]->toInt();
    } else if (args.size() == 6) {
        std::tm date{};
        date.tm_hour = args[0]->toInt();
        date.tm_min = args[1]->toInt();
        date.tm_sec = args[2]->toInt();
        date.tm_mday = args[3]->toInt();
        date.tm_mon = args[4]->toInt();
        date.tm_year = args[5]->toInt() - 1900;
        date.tm_isdst = -1;
        start = static_cast<int32_t>(std::mktime(&date));
    } else {
        return nullptr;
    }
    return krFactory::attachAndReturn(new krClock(krMain::instance(), start));
}

}  // namespace

void krRegisterInterfaceClasses() {
    krSymbols::addFunction("timer", timer, 0, "(seconds): a clock that fires \"timeout\" after that many seconds");
    krSymbols::addFunction("clock", clock, 0, "(), (time) or (hour, minute, second, day, month, year): a clock");
    krSymbols::addFunction("new_flyingCamera", krMakeModule<krFlyingCamera>, 0, "(owner?): a camera moved by the keys and the mouse");
    krSymbols::addFunction("new_floatingCamera", krMakeModule<krFloatingCamera>, 0, "(owner?): a camera that trails its target");
    krSymbols::addFunction("new_fixedCamera", krMakeModule<krFixedCamera>, 0, "(owner?): a camera fixed to its target");
    krSymbols::addFunction("new_control", krMakeModule<krControl>, 0,
                           "(owner): a control: a rectangle with fill, border and text, below a control or a desktop");
    krSymbols::addFunction("new_desktop", krMakeModule<krDesktop>, 0,
                           "(owner): the root of a tree of controls, below the window; an input target");

    for (const krClassInfo* info : {&krCamera::info, &krFlyingCamera::info, &krFollowCamera::info,
                                    &krFloatingCamera::info, &krFixedCamera::info, &krTimerClock::info, &krClock::info,
                                    &krControl::info, &krDesktop::info})
        krClasses::add(*info);

    using krSymbols::addInt;
    addInt("BORDER_TOP", krBorderTop);
    addInt("BORDER_BOTTOM", krBorderBottom);
    addInt("BORDER_LEFT", krBorderLeft);
    addInt("BORDER_RIGHT", krBorderRight);
    addInt("ALIGN_TOP", krAlignTop);
    addInt("ALIGN_MIDDLE", krAlignMiddle);
    addInt("ALIGN_BOTTOM", krAlignBottom);
    addInt("ALIGN_LEFT", krAlignLeft);
    addInt("ALIGN_CENTER", krAlignCenter);
    addInt("ALIGN_RIGHT", krAlignRight);
}
