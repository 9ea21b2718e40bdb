// What scripts can make and name of the vehicles subsystem: factories, class tables, constants.
#include "vehicles/krVehicleClasses.h"

#include "script/krClassInfo.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"
#include "vehicles/krAirplane.h"
#include "vehicles/krAutoPilot.h"
#include "vehicles/krCar.h"
#include "vehicles/krEngine.h"
#include "vehicles/krPropeller.h"
#include "vehicles/krTyre.h"
#include "vehicles/krWing.h"

void krRegisterVehicleClasses() {
    krSymbols::addFunction("new_vehicle", krMakeModule<krVehicle>, 0,
                           "(owner?): a body with a driver's seat and passengers, asleep");
    krSymbols::addFunction("new_car", krMakeModule<krCar>, 0, "(owner?): a car; give it mass, tyreCount and tyres");
    krSymbols::addFunction("new_tyre", krMakeModule<krTyre>, 0, "(vehicle): a wheel of the vehicle");
    krSymbols::addFunction("new_airplane", krMakeModule<krAirplane>, 0,
                           "(owner?): an airplane; give it wings, engines, propellers and tyres");
    krSymbols::addFunction("new_physicWing", krMakeModule<krWing>, 0, "(body): a lifting surface of the body");
    krSymbols::addFunction("new_physicEngine", krMakeModule<krEngine>, 0, "(body): an engine in the body");
    krSymbols::addFunction("new_physicPropeller", krMakeModule<krPropeller>, 0,
                           "(body): a propeller of the body; give it an engine");
    krSymbols::addFunction("new_rocketEngine", krMakeModule<krRocketEngine>, 0, "(body): a rocket pushing the body");
    krClasses::add(krVehicle::info);
    krClasses::add(krTyreVehicle::info);
    krClasses::add(krCar::info);
    krClasses::add(krTyre::info);
    krClasses::add(krAirplane::info);
    krClasses::add(krAutoPilot::info);
    krClasses::add(krWing::info);
    krClasses::add(krEngine::info);
    krClasses::add(krRocketEngine::info);
    krClasses::add(krPropeller::info);

    using krSymbols::addInt;
    // Human animation tracks and states, numbered from 1.
    const char* humanTracks[] = {
        "HUMAN_STAND", "HUMAN_ACCELERATE", "HUMAN_WALK", "HUMAN_RUN", "HUMAN_BEGIN_STANDING_JUMP",
        "HUMAN_BEGIN_FORWARD_JUMP", "HUMAN_BEGIN_MOVING_JUMP", "HUMAN_STANDING_JUMP", "HUMAN_FORWARD_JUMP",
        "HUMAN_MOVING_JUMP", "HUMAN_END_STANDING_JUMP", "HUMAN_END_FORWARD_JUMP", "HUMAN_END_MOVING_JUMP",
        "HUMAN_EYES_OPEN", "HUMAN_EYES_CLOSED", "HUMAN_WALK_LEFT", "HUMAN_WALK_RIGHT", "HUMAN_FALLDOWN",
        "HUMAN_RAISEUP"};
    int32_t track = 1;
    for (const char* name : humanTracks) addInt(name, track++);
    addInt("TRACK_WALKSPEED", 1);
    addInt("STATUS_NORMAL", 2);
    addInt("STATUS_HAPPY", 4);
    addInt("STATUS_ANGRY", 8);

    // Bits of the control class of a vehicle's control record.
    addInt("CAR_STEER", krTyreSteer);
    addInt("CAR_BRAKE", krTyreBrake);
    addInt("CAR_ACCELERATE", krTyreAccelerate);
    addInt("CAR_HANDBRAKE", krTyreHandbrake);
    addInt("AIRPLANE_STEER", krTyreSteer);
    addInt("AIRPLANE_BRAKE", krTyreBrake);
}
