#include "platform/copy.h"

#include <algorithm>
#include <atomic>
#include <cstring>

// Without optimisation, compilers keep 32-byte values on the stack, which mingw aligns to 16 bytes only.
#if defined(__x86_64__) && defined(__OPTIMIZE__)
#define ZV_WRITES_AROUND_CACHES 1
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace platform {

namespace {

std::atomic<uint64_t> bytes_copied{0}; // by all streams: they share the caches

#ifdef ZV_WRITES_AROUND_CACHES
/// One line of the caches; what is written around them is written in whole lines.
constexpr size_t line = 64;

size_t up_to_line(const void* destination, size_t size) noexcept
{
    const size_t into_line = reinterpret_cast<uintptr_t>(destination) % line;
    return into_line == 0 ? 0 : std::min(line - into_line, size);
}

/// AVX, because two writes to a line are a fifth faster than four.
__attribute__((target("avx"))) void copy_lines(unsigned char* destination, const unsigned char* source,
                                               size_t lines) noexcept
{
    auto* to = reinterpret_cast<__m256i*>(destination);
    const auto* from = reinterpret_cast<const __m256i*>(source);
    for (size_t i = 0; i < lines; ++i, to += 2, from += 2) {
        const __m256i first = _mm256_loadu_si256(from);
        const __m256i second = _mm256_loadu_si256(from + 1);
        _mm256_stream_si256(to, first);
        _mm256_stream_si256(to + 1, second);
    }
    _mm_sfence(); // such writes are not ordered with others: who sees the frame delivered must see all of it
}

void copy_around_caches(unsigned char* destination, const unsigned char* source, size_t size) noexcept
{
    const size_t head = up_to_line(destination, size);
    const size_t lines = (size - head) / line;
    const size_t done = head + lines * line;
    std::memcpy(destination, source, head);
    copy_lines(destination + head, source + head, lines);
    std::memcpy(destination + done, source + done, size - done);
}

/// One of the processor's caches: leaf 4, or 0x8000001D on AMD's, which has the same form.
struct Cache {
    bool is_described;
    uint64_t size;
};

Cache cache(unsigned leaf, unsigned index) noexcept
{
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    if (__get_cpuid_count(leaf, index, &a, &b, &c, &d) == 0 || (a & 0x1FU) == 0)
        return {false, 0};
    const uint64_t ways = (b >> 22U) + 1U;
    const uint64_t partitions = (b >> 12U & 0x3FFU) + 1U;
    const uint64_t line_size = (b & 0xFFFU) + 1U;
    return {true, ways * partitions * line_size * (uint64_t{c} + 1U)};
}

uint64_t ask_for_avoidable_cache() noexcept
{
    if (__builtin_cpu_supports("avx") == 0)
        return 0;
    constexpr unsigned most_caches = 8;
    uint64_t largest = 0;
    for (const unsigned leaf : {0x8000001DU, 4U}) {
        for (unsigned index = 0; index < most_caches; ++index) {
            const Cache described = cache(leaf, index);
            if (!described.is_described)
                break;
            largest = std::max(largest, described.size);
        }
    }
    return largest;
}
#else
void copy_around_caches(unsigned char* destination, const unsigned char* source, size_t size) noexcept
{
    std::memcpy(destination, source, size);
}

uint64_t ask_for_avoidable_cache() noexcept { return 0; }
#endif

/// Whether a copy is faster around the caches. A small frame is not: its consumer finds it in the caches. A
/// destination that is filled again soon is not: it is still there itself.
bool pays_around_caches(size_t size, uint64_t bytes_since) noexcept
{
    const uint64_t cache = avoidable_cache();
    return cache != 0 && size >= cache / 8 && bytes_since >= cache / 2;
}

} // namespace

uint64_t LastCopy::bytes_since(size_t size) noexcept
{
    const uint64_t before = bytes_copied.fetch_add(size, std::memory_order_relaxed);
    const uint64_t since = before - m_copied_before;
    m_copied_before = before;
    return since;
}

uint64_t avoidable_cache() noexcept
{
    static const uint64_t size = ask_for_avoidable_cache();
    return size;
}

void copy_frame(void* destination, const void* source, size_t size, CopyKind kind) noexcept
{
    if (kind == CopyKind::around_caches && avoidable_cache() != 0)
        copy_around_caches(static_cast<unsigned char*>(destination),
                           static_cast<const unsigned char*>(source), size);
    else
        std::memcpy(destination, source, size);
}

CopyKind copy_frame(void* destination, const void* source, size_t size, LastCopy& last) noexcept
{
    const CopyKind kind =
        pays_around_caches(size, last.bytes_since(size)) ? CopyKind::around_caches : CopyKind::through_caches;
    copy_frame(destination, source, size, kind);
    return kind;
}

} // namespace platform
