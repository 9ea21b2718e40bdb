// A renderer file that talks to the window library itself.
#include <SDL2/SDL.h>
#include "interface/i.h"
