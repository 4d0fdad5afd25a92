#pragma once

#include "imagelib/hdr/BitmapProvider.h"

/// A limit of the memory for pictures, which is put back.
class CacheLimit {
public:
    explicit CacheLimit(std::size_t bytes) { BitmapProvider::set_cache_limit(bytes); }
    CacheLimit(const CacheLimit&) = delete;
    CacheLimit& operator=(const CacheLimit&) = delete;
    ~CacheLimit() { BitmapProvider::set_cache_limit(old); }

private:
    const std::size_t old = BitmapProvider::inq_cache_limit();
};
