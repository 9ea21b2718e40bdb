// The socket layer may use the system headers.
#include <sys/socket.h>
