// The standard containers under the foundation's names; through operator new they live on heap 0.
#pragma once

#include <map>
#include <set>
#include <vector>

namespace KN_STD {

template <class T>
using VECTOR = std::vector<T>;
template <class T>
using SET = std::set<T>;
template <class K, class V>
using MAP = std::map<K, V>;

}  // namespace KN_STD
