// krPool: free lists by size class for the small, short-lived objects of the interpreter (values,
// iteration states), so that arithmetic and property reads do not reach malloc on the hot path.
// Memory taken by a class stays with it for reuse until the process ends.
#pragma once

#include <cstddef>

namespace krPool {
    void* allocate(std::size_t size);
    void free(void* p, std::size_t size);
}
