// A prefix code, read by its tree.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/bit_reader.h"

namespace Quorvex::g722_1 {

/// Where a bit leads: above 0 to another node, otherwise to minus the value that was coded.
struct CodeTreeNode {
  fixed_point::Word ifZero;
  fixed_point::Word ifOne;
};

/// Node 0 is the root. What the first bits lead to is looked up, the rest is walked. The tree is
/// not kept: a pointer to it would have each code's table relocated whenever the library is loaded.
class PrefixCode {
 public:
  constexpr explicit PrefixCode(std::span<const CodeTreeNode> tree) noexcept {
    for (unsigned bits = 0; bits < first_.size(); ++bits) {
      Step& step = first_[bits];
      do {
        ++step.length;
        step.next = Follow(tree, step.next, bits >> (kFirstBits - step.length) & 1);
      } while (step.next > 0 && step.length < kFirstBits);
    }
  }

  /// @param tree  the one that the code was made of.
  int Read(BitReader& reader, std::span<const CodeTreeNode> tree) const noexcept {
    const Step& step = first_[reader.Ahead() >> (32 - kFirstBits)];
    reader.Skip(step.length);
    int next = step.next;
    while (next > 0) next = Follow(tree, next, reader.Read(1));
    return -next;
  }

 private:
  static constexpr int kFirstBits = 8;

  struct Step {
    fixed_point::Word next = 0;
    fixed_point::Word length = 0;
  };

  static constexpr fixed_point::Word Follow(std::span<const CodeTreeNode> tree, int node,
                                            unsigned bit) noexcept {
    const CodeTreeNode& from = tree[static_cast<std::size_t>(node)];
    return bit != 0 ? from.ifOne : from.ifZero;
  }

  std::array<Step, 1 << kFirstBits> first_{};
};

}  // namespace Quorvex::g722_1
