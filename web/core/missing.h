#pragma once

// What the standard library of the WebAssembly compiler lacks, as far as the core uses it. Only
// this build includes it, before everything else.

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace std {

template <class array>
requires is_unbounded_array_v<array> unique_ptr<array> make_unique_for_overwrite(size_t count) {
  return unique_ptr<array>(new remove_extent_t<array>[count]);
}

/// For numbers that fit; only in fixed notation.
inline to_chars_result to_chars(char* first, char* last, float value, chars_format /*fixed*/,
                                int decimals) {
  const auto room = static_cast<size_t>(last - first);
  return {first + std::snprintf(first, room, "%.*f", decimals, static_cast<double>(value)), errc{}};
}

namespace ranges {

template <class range, class predicate>
bool any_of(const range& values, predicate test) {
  return std::any_of(std::begin(values), std::end(values), std::ref(test));
}

template <class range, class predicate>
constexpr bool all_of(const range& values, predicate test) {
  return std::all_of(std::begin(values), std::end(values), std::ref(test));
}

template <class range, class value, class order = std::less<>, class projection = std::identity>
auto lower_bound(range&& values, const value& wanted, order before = {}, projection key = {}) {
  return std::lower_bound(std::begin(values), std::end(values), wanted,
                          [&](const auto& element, const value& bound) {
                            return std::invoke(before, std::invoke(key, element), bound);
                          });
}

template <class range, class value>
bool binary_search(const range& values, const value& wanted) {
  return std::binary_search(std::begin(values), std::end(values), wanted);
}

template <class range, class order = std::less<>, class projection = std::identity>
void sort(range&& values, order before = {}, projection key = {}) {
  std::sort(std::begin(values), std::end(values), [&](const auto& a, const auto& b) {
    return std::invoke(before, std::invoke(key, a), std::invoke(key, b));
  });
}

template <class range, class order = std::less<>, class projection = std::identity>
void stable_sort(range&& values, order before = {}, projection key = {}) {
  std::stable_sort(std::begin(values), std::end(values), [&](const auto& a, const auto& b) {
    return std::invoke(before, std::invoke(key, a), std::invoke(key, b));
  });
}

template <class range, class order>
bool is_sorted(const range& values, order before) {
  return std::is_sorted(std::begin(values), std::end(values), before);
}

template <class range>
void reverse(range&& values) {
  std::reverse(std::begin(values), std::end(values));
}

template <class range, class iterator>
void copy(const range& values, iterator to) {
  std::copy(std::begin(values), std::end(values), to);
}

template <class range, class order>
void push_heap(range&& values, order before) {
  std::push_heap(std::begin(values), std::end(values), before);
}

template <class range, class order>
void pop_heap(range&& values, order before) {
  std::pop_heap(std::begin(values), std::end(values), before);
}

template <class range, class order = std::less<>, class projection = std::identity>
auto min(const range& values, order before = {}, projection key = {}) {
  return *std::min_element(std::begin(values), std::end(values), [&](const auto& a, const auto& b) {
    return std::invoke(before, std::invoke(key, a), std::invoke(key, b));
  });
}

template <class range, class value>
void replace(range&& values, const value& old_value, const value& new_value) {
  std::replace(std::begin(values), std::end(values), old_value, new_value);
}

}  // namespace ranges
}  // namespace std
