// The inverse transform with SSE2, which every x86-64 processor has.
//
// Sums, differences and rotations never mix what is 32 coefficients apart: what they make of a row
// of 32 stays in the row. Only the cores go across, one a column:
//
//     row 0   32 coefficients ─ split ─ | c |             | c | ─ rotations ─ 32 samples
//     row 1   32 coefficients ─ split ─ | o |             | o | ─ rotations ─ 32 samples
//       :                               | r | ─ 32 cores ─| r |
//     row 9   32 coefficients ─ split ─ | e |             | e | ─ rotations ─ 32 samples
//
// A row is four vectors. Its columns are numbered by what the five splits did, a bit each: 1 for
// the back half.
#include <emmintrin.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "codecs/engines/g722_1/inverse_transform.h"
#include "codecs/engines/g722_1/sse2_vectors.h"
#include "codecs/engines/g722_1/transform_tables.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Word;

constexpr std::size_t kRows = 10;
constexpr std::size_t kColumns = 32;
constexpr std::size_t kVectors = kColumns / kLanes;
constexpr std::size_t kRotations = 5;

struct alignas(16) Row {
  std::array<Word, kColumns> values;
  constexpr Word& operator[](std::size_t i) noexcept { return values[i]; }
  const Word* Vector(std::size_t v) const noexcept { return &values[v * kLanes]; }
  Word* Vector(std::size_t v) noexcept { return &values[v * kLanes]; }
};
using Rows = std::array<Row, kRows>;

struct Four {
  __m128i v0, v1, v2, v3;
};

constexpr bool IsOdd(int number) noexcept { return number % 2 != 0; }

// ---- From coefficients to the input of the cores.

// As the first split leaves its sums and differences: eight sums, their differences, and again.
constexpr Rows kDitherInPlace = [] {
  Rows result{};
  for (std::size_t r = 0; r < kRows; ++r) {
    for (std::size_t pair = 0; pair < kColumns / 2; ++pair) {
      const std::size_t sum = pair / kLanes * 2 * kLanes + pair % kLanes;
      result[r][sum] = kDither[r * kColumns + 2 * pair];
      result[r][sum + kLanes] = kDither[r * kColumns + 2 * pair + 1];
    }
  }
  return result;
}();

// Of neighbours, halved. Two coefficients and the dither stay within 16 bits.
__m128i SumPairs(__m128i low, __m128i high, __m128i signs, const Word* dither) {
  const __m128i sums = _mm_packs_epi32(_mm_madd_epi16(low, signs), _mm_madd_epi16(high, signs));
  return _mm_srai_epi16(_mm_add_epi16(sums, LoadAligned(dither)), 1);
}

Four FirstSplit(const Word* in, const Row& dither) {
  const __m128i plus = _mm_set1_epi16(1);
  const __m128i minus = _mm_set1_epi32(-0x10000 + 1);  // 1 and -1
  const __m128i v0 = Load(in);
  const __m128i v1 = Load(in + kLanes);
  const __m128i v2 = Load(in + 2 * kLanes);
  const __m128i v3 = Load(in + 3 * kLanes);
  return {SumPairs(v0, v1, plus, dither.Vector(0)), SumPairs(v0, v1, minus, dither.Vector(1)),
          SumPairs(v2, v3, plus, dither.Vector(2)), SumPairs(v2, v3, minus, dither.Vector(3))};
}

Four Split(const Four& in) {
  return {_mm_add_epi16(in.v0, in.v2), _mm_add_epi16(in.v1, in.v3), _mm_sub_epi16(in.v0, in.v2),
          _mm_sub_epi16(in.v1, in.v3)};
}

// Without saturation the other splits may come in any order. The first one leaves the number of a
// sum or difference among coefficients, a b c d, in the vectors' numbers (a) and in the lanes
// (b c d); interleaving puts the bit that was split last into the lanes and the next on top:
//
//     vectors  a  lanes  b c d                      split a, the 5th, interleave numbers
//              b         c d 5                      split b, the 4th, interleave pairs
//              c         d 4 5                      split c, the 3rd, interleave fours
//              d         3 4 5                      split d, the 2nd
//
// A column so has the bits 2 1 3 4 5.
void SplitRow(const Word* in, const Row& dither, Row& out) {
  Four row = Split(FirstSplit(in, dither));
  row = Split({_mm_unpacklo_epi16(row.v0, row.v2), _mm_unpacklo_epi16(row.v1, row.v3),
               _mm_unpackhi_epi16(row.v0, row.v2), _mm_unpackhi_epi16(row.v1, row.v3)});
  row = Split({_mm_unpacklo_epi32(row.v0, row.v2), _mm_unpacklo_epi32(row.v1, row.v3),
               _mm_unpackhi_epi32(row.v0, row.v2), _mm_unpackhi_epi32(row.v1, row.v3)});
  row = Split({_mm_unpacklo_epi64(row.v0, row.v2), _mm_unpacklo_epi64(row.v1, row.v3),
               _mm_unpackhi_epi64(row.v0, row.v2), _mm_unpackhi_epi64(row.v1, row.v3)});
  Store(row.v0, out.Vector(0));
  Store(row.v1, out.Vector(1));
  Store(row.v2, out.Vector(2));
  Store(row.v3, out.Vector(3));
}

// ---- The cores.

// The back half of a group is mirrored, so a column that went there an odd number of times meets
// the inputs of its core from the last on. In a mirrored group a difference changes its sign, which
// is made good here: with n times in the back, n (n - 1) / 2 times.
constexpr Word Factor(std::size_t column, std::size_t row, std::size_t output) noexcept {
  const int backs = std::popcount(column);
  const Word factor = kCore[IsOdd(backs) ? kRows - 1 - row : row][output];
  return IsOdd(backs * (backs - 1) / 2) ? static_cast<Word>(-factor) : factor;
}

// Two rows of eight columns, interleaved.
using FactorPairs = std::array<Word, 2 * kLanes>;
// By vector, output and pair of rows.
using Factors = std::array<std::array<std::array<FactorPairs, kRows / 2>, kRows>, kVectors>;

alignas(16) constexpr Factors kFactors = [] {
  Factors result{};
  for (std::size_t column = 0; column < kColumns; ++column) {
    for (std::size_t k = 0; k < kRows; ++k) {
      for (std::size_t r = 0; r < kRows; ++r) {
        const std::size_t lane = column % kLanes * 2 + r % 2;
        result[column / kLanes][k][r / 2][lane] = Factor(column, r, k);
      }
    }
  }
  return result;
}();

void TransformCores(const Rows& in, Rows& out) {
  for (std::size_t v = 0; v < kVectors; ++v) {
    __m128i low[kRows / 2];
    __m128i high[kRows / 2];
    for (std::size_t i = 0; i < kRows / 2; ++i) {
      const __m128i even = LoadAligned(in[2 * i].Vector(v));
      const __m128i odd = LoadAligned(in[2 * i + 1].Vector(v));
      low[i] = _mm_unpacklo_epi16(even, odd);
      high[i] = _mm_unpackhi_epi16(even, odd);
    }
    for (std::size_t k = 0; k < kRows; ++k) {
      __m128i lowSum = _mm_setzero_si128();
      __m128i highSum = _mm_setzero_si128();
      for (std::size_t i = 0; i < kRows / 2; ++i) {
        const FactorPairs& factors = kFactors[v][k][i];
        lowSum = _mm_add_epi32(lowSum, _mm_madd_epi16(low[i], LoadAligned(&factors[0])));
        highSum = _mm_add_epi32(highSum, _mm_madd_epi16(high[i], LoadAligned(&factors[kLanes])));
      }
      Store(PackRounded<15>(lowSum, highSum), out[k].Vector(v));
    }
  }
}

// ---- From the output of the cores to samples.

// A rotation turns pairs of neighbours. Fronts and backs are packed so that the neighbours of the
// next rotation come together; this is where the front of a pair goes, and the back kLanes further.
constexpr std::size_t FrontOfPair(std::size_t pair) noexcept {
  const std::size_t vector = pair / 4;
  return vector % 2 * 2 * kLanes + vector / 2 * 4 + pair % 4;
}

// What neighbours are multiplied by.
struct Turn {
  Row front, back;
};

// Of a row.
struct RowTables {
  std::array<Turn, kRotations> turns;
  std::array<std::size_t, kColumns> places;  // in its group, at last in the output
  Row bias;

  template <std::size_t kSize>
  constexpr void AddTurn(Turn& turn, const Rotation<kSize>& rotation) noexcept {
    std::array<std::size_t, kColumns> next{};
    for (std::size_t pair = 0; pair < kColumns / 2; ++pair) {
      const std::size_t place = places[2 * pair];
      const Word cosine = rotation.cosine[place];
      const Word minusSine = rotation.minusSine[place];
      const int sign = place % 2 == 0 ? 1 : -1;
      turn.front[2 * pair] = cosine;
      turn.front[2 * pair + 1] = static_cast<Word>(-sign * minusSine);
      turn.back[2 * pair] = minusSine;
      turn.back[2 * pair + 1] = static_cast<Word>(sign * cosine);
      next[FrontOfPair(pair)] = place;
      next[FrontOfPair(pair) + kLanes] = 2 * kSize - 1 - place;
    }
    places = next;
  }
};

constexpr auto kRowTables = [] {
  std::array<RowTables, kRows> result{};
  for (std::size_t r = 0; r < kRows; ++r) {
    RowTables& row = result[r];
    row.places.fill(r);
    row.AddTurn(row.turns[0], kRotation10);
    row.AddTurn(row.turns[1], kRotation20);
    row.AddTurn(row.turns[2], kRotation40);
    row.AddTurn(row.turns[3], kRotation80);
    row.AddTurn(row.turns[4], kRotation160);
    for (std::size_t i = 0; i < kColumns; ++i) row.bias[i] = kBias[row.places[i]];
  }
  return result;
}();

// Packing saturates what a rotation may saturate: two products stay below 2^30.
__m128i TurnPairs(__m128i a, const Word* byA, __m128i b, const Word* byB) {
  return PackRounded<14>(_mm_madd_epi16(a, LoadAligned(byA)), _mm_madd_epi16(b, LoadAligned(byB)));
}

Four Rotate(const Four& in, const Turn& turn) {
  const Row& front = turn.front;
  const Row& back = turn.back;
  return {TurnPairs(in.v0, front.Vector(0), in.v2, front.Vector(2)),
          TurnPairs(in.v0, back.Vector(0), in.v2, back.Vector(2)),
          TurnPairs(in.v1, front.Vector(1), in.v3, front.Vector(3)),
          TurnPairs(in.v1, back.Vector(1), in.v3, back.Vector(3))};
}

// Adds the bias and shifts. To the left it is by one bit: adding a number to itself.
class Finish {
 public:
  explicit Finish(int magnitudeShift) noexcept
      : isDoubled_(_mm_set1_epi16(magnitudeShift < 0 ? -1 : 0)),
        right_(_mm_cvtsi32_si128(magnitudeShift < 0 ? 0 : magnitudeShift)) {}

  void operator()(__m128i vector, const Word* bias, Word* out) const noexcept {
    const __m128i sum = _mm_adds_epi16(vector, LoadAligned(bias));
    const __m128i doubled = _mm_adds_epi16(sum, _mm_and_si128(sum, isDoubled_));
    Store(_mm_sra_epi16(doubled, right_), out);
  }

 private:
  __m128i isDoubled_;
  __m128i right_;
};

void RotateRow(Row& row, const RowTables& tables, const Finish& finish) {
  Four four = {LoadAligned(row.Vector(0)), LoadAligned(row.Vector(1)), LoadAligned(row.Vector(2)),
               LoadAligned(row.Vector(3))};
  for (const Turn& turn : tables.turns) four = Rotate(four, turn);
  finish(four.v0, tables.bias.Vector(0), row.Vector(0));
  finish(four.v1, tables.bias.Vector(1), row.Vector(1));
  finish(four.v2, tables.bias.Vector(2), row.Vector(2));
  finish(four.v3, tables.bias.Vector(3), row.Vector(3));
}

// The vectors' lane i becomes vector i.
void Transpose(__m128i (&v)[kLanes]) {
  // Interleaving the first half of the vectors with the second half, three times, exchanges the
  // numbers of vectors and lanes.
  for (int turn = 0; turn < 3; ++turn) {
    __m128i next[kLanes];
    for (std::size_t i = 0; i < kLanes / 2; ++i) {
      next[2 * i] = _mm_unpacklo_epi16(v[i], v[i + kLanes / 2]);
      next[2 * i + 1] = _mm_unpackhi_epi16(v[i], v[i + kLanes / 2]);
    }
    for (std::size_t i = 0; i < kLanes; ++i) v[i] = next[i];
  }
}

// A column is ten neighbours of the output, upwards or, where it was mirrored, downwards. Where the
// first of eight columns goes downwards, rows are taken from the last on, so that it goes upwards.
void StoreColumns(const Rows& rows, std::size_t v, Word* output) {
  const bool fromLast = IsOdd(std::popcount(v));
  const auto row = [&](std::size_t i) { return fromLast ? kRows - 1 - i : i; };
  __m128i columns[kLanes];
  for (std::size_t i = 0; i < kLanes; ++i) columns[i] = LoadAligned(rows[row(i)].Vector(v));
  const __m128i eighth = LoadAligned(rows[row(kLanes)].Vector(v));
  const __m128i ninth = LoadAligned(rows[row(kLanes + 1)].Vector(v));
  alignas(16) std::array<Word, 2 * kLanes> upwards;
  alignas(16) std::array<Word, 2 * kLanes> downwards;
  Store(_mm_unpacklo_epi16(eighth, ninth), &upwards[0]);
  Store(_mm_unpackhi_epi16(eighth, ninth), &upwards[kLanes]);
  Store(_mm_unpacklo_epi16(ninth, eighth), &downwards[0]);
  Store(_mm_unpackhi_epi16(ninth, eighth), &downwards[kLanes]);
  Transpose(columns);
  for (std::size_t i = 0; i < kLanes; ++i) {
    Word* const first = output + kRowTables[row(0)].places[v * kLanes + i];
    if (IsOdd(std::popcount(i))) {
      Store(Reverse(columns[i]), first - (kLanes - 1));
      std::memcpy(first - (kRows - 1), &downwards[2 * i], 2 * sizeof(Word));
    } else {
      Store(columns[i], first);
      std::memcpy(first + kLanes, &upwards[2 * i], 2 * sizeof(Word));
    }
  }
}

// Of a magnitude as of a factor: the number times its sign.
int SumOfMagnitudes(const Word* coefficients) {
  __m128i sums = _mm_setzero_si128();
  for (std::size_t i = 0; i < kFrameSamples; i += kLanes) {
    const __m128i numbers = Load(coefficients + i);
    const __m128i signs = _mm_or_si128(_mm_srai_epi16(numbers, 15), _mm_set1_epi16(1));
    sums = _mm_add_epi32(sums, _mm_madd_epi16(numbers, signs));
  }
  sums = _mm_add_epi32(sums, _mm_unpackhi_epi64(sums, sums));
  return _mm_cvtsi128_si32(_mm_add_epi32(sums, _mm_shuffle_epi32(sums, 1)));
}

// With m the sum of all magnitudes, what enters the cores is at most m / 2 + 16, the inputs of one
// core together m / 2 + 160, its outputs 0.4487 m + 95. So with m up to this, nothing up to the
// cores saturates.
constexpr int kMostMagnitudes = 65500;

}  // namespace

bool InverseTransformVector(const Word* coefficients, int magnitudeShift, Word* output) noexcept {
  if (SumOfMagnitudes(coefficients) > kMostMagnitudes) return false;
  Rows in;
  for (std::size_t r = 0; r < kRows; ++r) {
    SplitRow(coefficients + r * kColumns, kDitherInPlace[r], in[r]);
  }
  Rows rows;
  TransformCores(in, rows);
  const Finish finish(magnitudeShift);
  for (std::size_t r = 0; r < kRows; ++r) RotateRow(rows[r], kRowTables[r], finish);
  for (std::size_t v = 0; v < kVectors; ++v) StoreColumns(rows, v, output);
  return true;
}

}  // namespace Quorvex::g722_1
