// SPDX-License-Identifier: MIT
// The merge sort of lists, for comparisons that are anybody's code: one that is no order makes a list in some order,
// and nothing worse.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

#include <cstring>

/// Copies elements that are copied as memory is; the lists do not overlap.
template <class T> void _ZPCopyList(T *to, const T *from, unsigned count) {
    std::memcpy(static_cast<void *>(to), static_cast<const void *>(from), count * sizeof(T));
}

/// Sorts `count` elements, which are copied as memory is, stably and answers the list that holds them in order:
/// `source` or `result`, each with room for `count`, as is `scratch`. `order(a, b)` is above 0 where b comes first;
/// `checkPresorted` skips merges of halves that are in order already.
template <class T, class Order>
T *_ZPMergeSorted(unsigned count, T *source, T *result, T *scratch, Order order, bool checkPresorted) {
    auto put = [=](const T &a, const T &b, const T &c) {
        result[0] = a, result[1] = b, result[2] = c;
        return result;
    };
    if (count < 2) return source;
    if (count == 2) {
        if (order(source[0], source[1]) <= 0) return source;
        T first = source[0];
        result[0] = source[1], result[1] = first;
        return result;
    }
    if (count == 3) {
        T x = source[0], y = source[1], z = source[2];
        int r1 = order(x, y), r2 = order(y, z);
        if (r1 <= 0 && r2 <= 0) return source;
        if (r1 > 0 && r2 > 0) return put(z, y, x);
        bool inOrder = order(x, z) <= 0;
        if (r1 <= 0) return inOrder ? put(x, z, y) : put(z, x, y);
        return inOrder ? put(y, x, z) : put(y, z, x);
    }
    // The halves land in `source` or `scratch`; `result` serves them as scratch and then takes the merge.
    unsigned half = count / 2, rest = count - half;
    T *left = _ZPMergeSorted(half, source, scratch, result, order, checkPresorted);
    T *right = _ZPMergeSorted(rest, source + half, scratch + half, result + half, order, checkPresorted);
    T *leftEnd = left + half, *rightEnd = right + rest;
    if (checkPresorted && order(leftEnd[-1], right[0]) <= 0) {
        if (left == source && right == source + half) return source;
        _ZPCopyList(result, left, half);
        _ZPCopyList(result + half, right, rest);
        return result;
    }
    T *to = result;
    for (;;) {
        if (order(*left, *right) <= 0) {
            *to++ = *left++;
            if (left == leftEnd) break;
        } else {
            *to++ = *right++;
            if (right == rightEnd) break;
        }
    }
    if (left != leftEnd) _ZPCopyList(to, left, unsigned(leftEnd - left));
    else _ZPCopyList(to, right, unsigned(rightEnd - right));
    return result;
}
