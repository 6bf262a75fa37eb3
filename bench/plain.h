// Exact decimals of 13 bytes in plain C++, and a minimal tree of operations on them.
#ifndef ORLI11_BENCH_PLAIN_H
#define ORLI11_BENCH_PLAIN_H

#include <cstdint>
#include <cstring>

// A coefficient of 96 bits and its scale, packed: what a node leaves for the next one.
struct Packed {
  uint8_t bytes[13];
};

__extension__ typedef __int128 PlainInteger;

// A decimal in registers, coefficient / 10^scale.
struct Plain {
  PlainInteger coefficient;
  int32_t scale;
};

inline Plain Unpack(const Packed &packed) {
  uint64_t low = 0;
  int32_t high = 0;
  std::memcpy(&low, packed.bytes, sizeof low);
  std::memcpy(&high, packed.bytes + 8, sizeof high);
  return {static_cast<PlainInteger>(high) << 64 | low, static_cast<int8_t>(packed.bytes[12])};
}

inline void Pack(Packed *packed, const Plain &number) {
  const auto low = static_cast<uint64_t>(number.coefficient);
  const auto high = static_cast<int32_t>(number.coefficient >> 64);
  std::memcpy(packed->bytes, &low, sizeof low);
  std::memcpy(packed->bytes + 8, &high, sizeof high);
  packed->bytes[12] = static_cast<uint8_t>(number.scale);
}

struct PlainPowers {
  uint64_t of[20];
};
constexpr PlainPowers MakePlainPowers() {
  PlainPowers powers = {};
  uint64_t power = 1;
  for (uint64_t &entry : powers.of) {
    entry = power;
    power *= 10;
  }
  return powers;
}
inline constexpr PlainPowers kPlainPowers = MakePlainPowers();

inline PlainInteger PowerOfTen(int32_t exponent) {
  return kPlainPowers.of[exponent];
}

inline Plain PlainAdd(Plain a, Plain b) {
  if (a.scale < b.scale) {
    a = {a.coefficient * PowerOfTen(b.scale - a.scale), b.scale};
  } else if (a.scale > b.scale) {
    b = {b.coefficient * PowerOfTen(a.scale - b.scale), a.scale};
  }
  return {a.coefficient + b.coefficient, a.scale};
}

[[gnu::noinline]] inline void Add(Packed *result, const Packed &a, const Packed &b) {
  Pack(result, PlainAdd(Unpack(a), Unpack(b)));
}
[[gnu::noinline]] inline void Subtract(Packed *result, const Packed &a, const Packed &b) {
  const Plain subtrahend = Unpack(b);
  Pack(result, PlainAdd(Unpack(a), {-subtrahend.coefficient, subtrahend.scale}));
}
[[gnu::noinline]] inline void Multiply(Packed *result, const Packed &a, const Packed &b) {
  const Plain x = Unpack(a);
  const Plain y = Unpack(b);
  Pack(result, {x.coefficient * static_cast<int64_t>(y.coefficient), x.scale + y.scale});
}
// To 22 places more than the operands have; the rest is truncated.
[[gnu::noinline]] inline void Divide(Packed *result, const Packed &a, const Packed &b) {
  const Plain x = Unpack(a);
  const Plain y = Unpack(b);
  Pack(result,
       {x.coefficient * PowerOfTen(11) * PowerOfTen(11) / y.coefficient, x.scale + 22 - y.scale});
}
// Rounded half away from zero, or truncated, to a number of places.
inline void RoundOrCut(Packed *result, const Packed &a, const Packed &places, bool cut) {
  const Plain x = Unpack(a);
  const auto kept = static_cast<int32_t>(Unpack(places).coefficient);
  if (x.scale <= kept) {
    *result = a;
    return;
  }
  const auto power = static_cast<int64_t>(PowerOfTen(x.scale - kept));
  const auto c = static_cast<int64_t>(x.coefficient);
  const int64_t half = cut ? 0 : c < 0 ? -power / 2 : power / 2;
  Pack(result, {(c + half) / power, kept});
}
[[gnu::noinline]] inline void Round(Packed *result, const Packed &a, const Packed &places) {
  RoundOrCut(result, a, places, false);
}
[[gnu::noinline]] inline void Truncate(Packed *result, const Packed &a, const Packed &places) {
  RoundOrCut(result, a, places, true);
}
inline int32_t SignOf(const Packed &a) {
  const PlainInteger c = Unpack(a).coefficient;
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}
[[gnu::noinline]] inline void Absolute(Packed *result, const Packed &a, const Packed & /*none*/) {
  const Plain x = Unpack(a);
  Pack(result, {x.coefficient < 0 ? -x.coefficient : x.coefficient, x.scale});
}
[[gnu::noinline]] inline void Remainder(Packed *result, const Packed &a, const Packed &b) {
  Pack(result,
       {static_cast<int64_t>(Unpack(a).coefficient) % static_cast<int64_t>(Unpack(b).coefficient),
        0});
}
[[gnu::noinline]] inline void Larger(Packed *result, const Packed &a, const Packed &b) {
  const Plain subtrahend = Unpack(b);
  const Plain difference = PlainAdd(Unpack(a), {-subtrahend.coefficient, subtrahend.scale});
  *result = difference.coefficient < 0 ? b : a;
}

inline Packed Constant(int64_t coefficient, int32_t scale) {
  Packed packed;
  Pack(&packed, {coefficient, scale});
  return packed;
}

inline double ToDouble(const Packed &packed) {
  Plain number = Unpack(packed);
  double power = 1;
  for (; number.scale > 0; --number.scale) {
    power *= 10;
  }
  return static_cast<double>(number.coefficient) / power;
}

// A minimal tree: a leaf that reads, a constant, or an operation on one or two values.
struct PlainNode {
  void (*read)(Packed *value);
  void (*operation)(Packed *result, const Packed &left, const Packed &right);
  const PlainNode *left, *right;
  Packed value;
};

[[gnu::noinline]] inline void Walk(const PlainNode *node, Packed *result) {
  if (node->read != nullptr) {
    node->read(result);
  } else if (node->operation == nullptr) {
    *result = node->value;
  } else {
    Packed left;
    Packed right;
    Walk(node->left, &left);
    if (node->right != nullptr) {
      Walk(node->right, &right);
    }
    node->operation(result, left, right);
  }
}

#endif
