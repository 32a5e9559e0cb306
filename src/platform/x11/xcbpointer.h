#pragma once

#include <cstdlib>
#include <memory>

// Owns what XCB hands out with malloc (replies, events): freed with free().
struct XcbFree
{
    void operator()(void *p) const { std::free(p); }
};
template<typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;
