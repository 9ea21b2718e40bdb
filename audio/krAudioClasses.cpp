// What scripts can make and name of the audio subsystem: enable_sounds, factories, class tables.
#include "audio/krAudioClasses.h"

#include "audio/krAudio.h"
#include "audio/krListener.h"
#include "audio/krMusic.h"
#include "audio/krSound.h"
#include "script/krFactory.h"
#include "script/krSymbols.h"

namespace {

krVariant* enableSounds(krBlock*, const krArgs&) {
    krAudio::start();
    return nullptr;
}

}  // namespace

void krRegisterAudioClasses() {
    krSymbols::addFunction("enable_sounds", enableSounds, 0,
                           "(): turns sound output on; until then every sound is silent");
    krSymbols::addFunction("new_sound", krMakeModule<krSound>, 0, "(owner?): a sound from WAV files that moves with its owner");
    krSymbols::addFunction("new_music", krMakeModule<krMusic>, 0, "(owner?): a sound from Ogg Vorbis files, decoded whole");
    krSymbols::addFunction("new_listener", krMakeModule<krListener>, 0, "(owner?): the ears; the last one made is in force");
    krClasses::add(krSound::info);
    krClasses::add(krMusic::info);
    krClasses::add(krListener::info);
}

void krCloseAudio() { krAudio::close(); }
