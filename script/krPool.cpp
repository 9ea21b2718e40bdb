// Pool allocator: 16 size classes in steps of 8 bytes, carved from 64 KiB slabs. Larger requests go
// to the general heap. In sanitizer builds every request goes to the heap, so that use after free
// and leaks of pooled objects stay visible.
#include "script/krPool.h"

#include <cstdint>
#include <new>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define KR_POOL_BYPASS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KR_POOL_BYPASS 1
#endif
#endif

namespace {
// Size classes step by the alignment that every pooled object needs.
constexpr std::size_t classStep = 8;
// The largest pooled object; an array value with its ordered map is the biggest common one.
constexpr std::size_t classCount = 16;
constexpr std::size_t maxPooled = classStep * classCount;
// Slabs are big enough that carving them is rare, small enough not to waste much per class.
constexpr std::size_t slabBytes = 64 * 1024;

struct FreeNode {
    FreeNode* next;
};

FreeNode* freeLists[classCount] = {};

std::size_t classOf(std::size_t size) { return (size + classStep - 1) / classStep - 1; }

void refill(std::size_t cls) {
    const std::size_t bytes = (cls + 1) * classStep;
    char* slab = static_cast<char*>(::operator new(slabBytes));
    for (std::size_t offset = 0; offset + bytes <= slabBytes; offset += bytes) {
        auto* node = reinterpret_cast<FreeNode*>(slab + offset);
        node->next = freeLists[cls];
        freeLists[cls] = node;
    }
}
}

void* krPool::allocate(std::size_t size) {
#ifdef KR_POOL_BYPASS
    return ::operator new(size);
#else
    if (size == 0 || size > maxPooled) return ::operator new(size);
    const std::size_t cls = classOf(size);
    if (!freeLists[cls]) refill(cls);
    FreeNode* node = freeLists[cls];
    freeLists[cls] = node->next;
    return node;
#endif
}

void krPool::free(void* p, std::size_t size) {
    if (!p) return;
#ifdef KR_POOL_BYPASS
    (void)size;
    ::operator delete(p);
#else
    if (size == 0 || size > maxPooled) {
        ::operator delete(p);
        return;
    }
    auto* node = static_cast<FreeNode*>(p);
    const std::size_t cls = classOf(size);
    node->next = freeLists[cls];
    freeLists[cls] = node;
#endif
}
