// A renderer file that includes the top of the program.
#include "krProgram.h"
