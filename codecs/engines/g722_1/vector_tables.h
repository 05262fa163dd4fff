// Quantisers of coefficient vectors, a category each, from ITU-T G.722.1.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/prefix_code.h"
#include "codecs/engines/g722_1/vector_trees.h"

namespace Quorvex::g722_1 {

template <std::size_t kLevels>
struct Quantiser {
  std::array<fixed_point::Word, kLevels> centroids;  ///< of a standard deviation of 1, Q12
  std::size_t dimension;                             ///< coefficients in a vector
  std::span<const CodeTreeNode> tree;                ///< of a vector's levels
};

template <int kCategory>
inline constexpr int kQuantiser = 0;
template <>
inline constexpr Quantiser<14> kQuantiser<0> = {
    {0, 1606, 3119, 4586, 6049, 7502, 8941, 10406, 11851, 13292, 14736, 16146, 17566, 19351},
    2,
    kVectorTree0};
template <>
inline constexpr Quantiser<10> kQuantiser<1> = {
    {0, 2229, 4341, 6401, 8471, 10531, 12583, 14588, 16673, 18924}, 2, kVectorTree1};
template <>
inline constexpr Quantiser<7> kQuantiser<2> = {
    {0, 3055, 5998, 8929, 11806, 14680, 17680}, 2, kVectorTree2};
template <>
inline constexpr Quantiser<5> kQuantiser<3> = {{0, 4121, 8192, 12259, 16322}, 4, kVectorTree3};
template <>
inline constexpr Quantiser<4> kQuantiser<4> = {{0, 5413, 11071, 16315}, 4, kVectorTree4};
template <>
inline constexpr Quantiser<3> kQuantiser<5> = {{0, 6785, 14300}, 5, kVectorTree5};
template <>
inline constexpr Quantiser<2> kQuantiser<6> = {{0, 8044}, 5, kVectorTree6};

/// Level of noise beside the standard deviation, of the last categories, Q15.
inline constexpr std::array<fixed_point::Word, 3> kNoiseFactors = {5793, 8192, 23170};

}  // namespace Quorvex::g722_1
