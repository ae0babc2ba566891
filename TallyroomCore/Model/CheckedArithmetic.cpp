#include "Model/CheckedArithmetic.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tallyroom {

namespace {

[[noreturn]] void endForOverflow()
{
    std::fputs("tallyroom: a sum of sizes left the range of 64 bits\n", stderr);
    std::abort();
}

} // namespace

std::int64_t checkedSum(std::int64_t left, std::int64_t right)
{
    std::int64_t sum = 0;
    if (__builtin_add_overflow(left, right, &sum)) {
        endForOverflow();
    }
    return sum;
}

std::int64_t checkedDifference(std::int64_t left, std::int64_t right)
{
    std::int64_t difference = 0;
    if (__builtin_sub_overflow(left, right, &difference)) {
        endForOverflow();
    }
    return difference;
}

std::int64_t checkedProduct(std::int64_t left, std::int64_t right)
{
    std::int64_t product = 0;
    if (__builtin_mul_overflow(left, right, &product)) {
        endForOverflow();
    }
    return product;
}

std::int64_t saturatedSum(std::int64_t left, std::int64_t right) noexcept
{
    std::int64_t sum = 0;
    return __builtin_add_overflow(left, right, &sum) ? std::numeric_limits<std::int64_t>::max() : sum;
}

std::int64_t saturatedProduct(std::int64_t left, std::int64_t right) noexcept
{
    std::int64_t product = 0;
    return __builtin_mul_overflow(left, right, &product) ? std::numeric_limits<std::int64_t>::max() : product;
}

} // namespace tallyroom
