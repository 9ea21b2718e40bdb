// A core file that reaches up into rendering.
#include "render/r.h"
#include "script/s.h"
#include "platform/p.h"
