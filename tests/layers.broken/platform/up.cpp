// A platform file that reaches up into the input layer.
#include "interface/i.h"
#include <SDL2/SDL.h>
