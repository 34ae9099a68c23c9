// The loops of ExpansionKernel between points and expansions, included once per instruction set
// into an unnamed namespace that already contains the set's operations on lanes and `kGroups`.
// Nothing here may call an inline function with external linkage, such as those of the standard
// library: its code would be compiled for the wider set and shared with all callers. Complex arrays
// are read as pairs of doubles.

using math::kNumLanes;
using math::storeLanes;

[[gnu::always_inline]] inline double* parts(std::complex<double>* c) {
  return reinterpret_cast<double*>(c);
}
[[gnu::always_inline]] inline const double* parts(const std::complex<double>* c) {
  return reinterpret_cast<const double*>(c);
}

struct ComplexLanes {
  Lanes re;
  Lanes im;
};

/// A complex number per lane: real parts, then imaginary parts.
[[gnu::always_inline]] inline ComplexLanes loadPair(const double* from) {
  return {loadLanes(from), loadLanes(from + kNumLanes)};
}
[[gnu::always_inline]] inline void storePair(double* to, const ComplexLanes& value) {
  storeLanes(to, value.re);
  storeLanes(to + kNumLanes, value.im);
}

/// Points relative to a centre, in groups of eight lanes that are processed together: while one
/// group waits for the end of its chain of products, the other computes.
template <u64 kGroups>
struct RelativePoints {
  Lanes x[kGroups];
  Lanes y[kGroups];
  Lanes z[kGroups];
};

/// Lanes after the last point repeat it, so that they contain harmless numbers.
[[gnu::always_inline]] inline Lanes loadUpTo(const double* from, u64 count) {
  if (count >= kNumLanes) return loadLanes(from);
  double v[kNumLanes];
  for (u64 l = 0; l < kNumLanes; ++l) v[l] = from[l < count ? l : count - 1];
  return loadLanes(v);
}

/// The points from `first` on; each group has at least one.
template <u64 kGroups>
[[gnu::always_inline]] inline RelativePoints<kGroups> relativePoints(const ExpansionPoints& points,
                                                                     u64 first,
                                                                     const double* centre) {
  RelativePoints<kGroups> d;
  for (u64 g = 0; g < kGroups; ++g, first += kNumLanes) {
    const u64 left = points.count - first;
    d.x[g] = loadUpTo(points.x + first, left) - centre[0];
    d.y[g] = loadUpTo(points.y + first, left) - centre[1];
    d.z[g] = loadUpTo(points.z + first, left) - centre[2];
  }
  return d;
}

[[gnu::always_inline]] inline Lanes loadCharges(const double* charges, u64 left) {
  if (left >= kNumLanes) return loadLanes(charges);
  double v[kNumLanes] = {};
  for (u64 l = 0; l < left; ++l) v[l] = charges[l];
  return loadLanes(v);
}

/// Walks the harmonics R(n, m) or S(n, m) times a factor, m outer and n inner. Each is the product
/// of a number a(n, m), which the callers take care of, of w(m), a multiple of (x + iy)^m, and of a
/// real polynomial q(n, m), see `RecursionTable`.
template <bool kRegular, u64 kGroups>
class HarmonicsWalk {
 public:
  [[gnu::always_inline]] HarmonicsWalk(const RecursionTable& table,
                                       const RelativePoints<kGroups>& d, double factor)
      : d_(d), steps_(kRegular ? table.regularSteps() : table.singularSteps()) {
    for (u64 g = 0; g < kGroups; ++g) {
      squared_[g] = d.x[g] * d.x[g] + d.y[g] * d.y[g] + d.z[g] * d.z[g];
      w_[g] = {Lanes{} + factor, Lanes{}};
      if constexpr (!kRegular) {
        // 1 / r^2 as the square of 1 / r with one Newton step: high powers need its last digit.
        const Lanes inverse = inverseRoot(squared_[g]);
        const Lanes square = inverse * inverse;
        squared_[g] = square + square * (1.0 - squared_[g] * square);
        d_.x[g] *= squared_[g];
        d_.y[g] *= squared_[g];
        d_.z[g] *= squared_[g];
        w_[g].re *= inverse;
      }
    }
  }

  /// From w(m - 1) to v(m) and w(m) = (x + iy) v(m), for S with x + iy over r^2.
  [[gnu::always_inline]] void raiseOrder(u64 m) {
    const double factor = kRegular ? 0.5 / static_cast<double>(m) : static_cast<double>(2 * m - 1);
    for (u64 g = 0; g < kGroups; ++g) {
      v_[g] = {w_[g].re * factor, w_[g].im * factor};
      w_[g] = {d_.x[g] * v_[g].re - d_.y[g] * v_[g].im, d_.x[g] * v_[g].im + d_.y[g] * v_[g].re};
    }
  }

  /// Hands q(n, m) of every group to `use(place, q)` for n = m to `degree`; place counts from 0 on.
  /// Orders must come one after the other from 0 on.
  template <class Use>
  [[gnu::always_inline]] void walkDegrees(u64 m, u64 degree, const Use& use) {
    Lanes before[kGroups];
    for (u64 g = 0; g < kGroups; ++g) before[g] = Lanes{} + 1.0;
    use(0, before);
    if (m == degree) return;
    Lanes last[kGroups];
    for (u64 g = 0; g < kGroups; ++g) last[g] = d_.z[g];
    use(1, last);
    for (u64 i = 2; i <= degree - m; ++i) {
      for (u64 g = 0; g < kGroups; ++g) {
        const Lanes next = (d_.z[g] * steps_[i]) * last[g] - squared_[g] * before[g];
        before[g] = last[g];
        last[g] = next;
      }
      use(i, last);
    }
    steps_ += degree - m + 1;
  }

  [[nodiscard, gnu::always_inline]] const ComplexLanes& v(u64 group) const { return v_[group]; }
  [[nodiscard, gnu::always_inline]] const ComplexLanes& w(u64 group) const { return w_[group]; }
  /// x and y, for S over r^2.
  [[nodiscard, gnu::always_inline]] Lanes x(u64 group) const { return d_.x[group]; }
  [[nodiscard, gnu::always_inline]] Lanes y(u64 group) const { return d_.y[group]; }
  /// r^2 or 1 / r^2.
  [[nodiscard, gnu::always_inline]] Lanes squared(u64 group) const { return squared_[group]; }

 private:
  RelativePoints<kGroups> d_;
  Lanes squared_[kGroups];
  ComplexLanes v_[kGroups];
  ComplexLanes w_[kGroups];
  const double* steps_;
};

/// Adds charge times w(m) q(n, m) of the points from `first` on to one group of lanes per
/// coefficient. The imaginary parts of order 0 are zero.
template <bool kRegular, u64 kGroups>
[[gnu::always_inline]] inline void addPoints(const RecursionTable& table,
                                             const ExpansionPoints& points, const double* charges,
                                             const double* centre, u64 first, double* sums) {
  const u64 degree = table.degree();
  HarmonicsWalk<kRegular, kGroups> walk(table, relativePoints<kGroups>(points, first, centre), 1.0);
  Lanes q[kGroups];
  Lanes real[kGroups];
  for (u64 g = 0; g < kGroups; ++g) {
    const u64 at = first + g * kNumLanes;
    q[g] = loadCharges(charges + at, points.count - at);
    real[g] = q[g] * walk.w(g).re;
  }
  walk.walkDegrees(0, degree, [&](u64 i, const Lanes(&value)[kGroups]) {
    double* const sum = sums + 2 * kNumLanes * i;
    Lanes total = loadLanes(sum);
    for (u64 g = 0; g < kGroups; ++g) total += real[g] * value[g];
    storeLanes(sum, total);
  });
  for (u64 m = 1; m <= degree; ++m) {
    sums += 2 * kNumLanes * (degree - m + 2);
    walk.raiseOrder(m);
    ComplexLanes w[kGroups];
    for (u64 g = 0; g < kGroups; ++g) w[g] = {q[g] * walk.w(g).re, q[g] * walk.w(g).im};
    walk.walkDegrees(m, degree, [&](u64 i, const Lanes(&value)[kGroups]) {
      double* const sum = sums + 2 * kNumLanes * i;
      ComplexLanes total = loadPair(sum);
      for (u64 g = 0; g < kGroups; ++g) {
        total.re += w[g].re * value[g];
        total.im += w[g].im * value[g];
      }
      storePair(sum, total);
    });
  }
}

/// The next place whose groups of lanes don't cross lines of the cache.
[[gnu::always_inline]] inline double* alignedToLanes(double* from) {
  constexpr u64 kBytes = kNumLanes * sizeof(double);
  const u64 behind = reinterpret_cast<u64>(from) % kBytes;
  return from + (kBytes - behind) % kBytes / sizeof(double);
}

template <bool kRegular>
[[gnu::always_inline]] inline void pointsToExpansion(const RecursionTable& table,
                                                     const ExpansionPoints& points,
                                                     const double* charges, const double* centre,
                                                     std::complex<double>* expansion,
                                                     double* scratch) {
  const u64 degree = table.degree();
  double* sums = alignedToLanes(scratch);
  for (u64 i = 0; i < (degree + 1) * (degree + 2); ++i) storeLanes(sums + i * kNumLanes, Lanes{});
  u64 first = 0;
  for (; first + (kGroups - 1) * kNumLanes < points.count; first += kGroups * kNumLanes)
    addPoints<kRegular, kGroups>(table, points, charges, centre, first, sums);
  for (; first < points.count; first += kNumLanes)
    addPoints<kRegular, 1>(table, points, charges, centre, first, sums);
  double* const out = parts(expansion);
  const double* scale = kRegular ? table.regularScales() : table.singularScales();
  for (u64 m = 0; m <= degree; ++m) {
    for (u64 n = m; n <= degree; ++n, ++scale, sums += 2 * kNumLanes) {
      const u64 index = n * (n + 1) / 2 + m;
      const ComplexLanes sum = loadPair(sums);
      out[2 * index] += *scale * math::sumOfLanes(sum.re);
      out[2 * index + 1] += *scale * math::sumOfLanes(sum.im);
    }
  }
}

void pointsToMultipole(const RecursionTable& table, const ExpansionPoints& points,
                       const double* charges, const double* centre, std::complex<double>* multipole,
                       double* scratch) {
  pointsToExpansion<true>(table, points, charges, centre, multipole, scratch);
}

void pointsToLocal(const RecursionTable& table, const ExpansionPoints& points,
                   const double* charges, const double* centre, std::complex<double>* local,
                   double* scratch) {
  pointsToExpansion<false>(table, points, charges, centre, local, scratch);
}

/// @pre `value` is not a product, which the compiler might fuse with the addition: full and partial
/// groups would then round differently.
[[gnu::always_inline]] inline void addUpTo(double* to, Lanes value, u64 count) {
  if (count >= kNumLanes) {
    storeLanes(to, loadLanes(to) + value);
    return;
  }
  double v[kNumLanes];
  storeLanes(v, value);
  for (u64 l = 0; l < count; ++l) to[l] += v[l];
}

/// Adds potential and gradient at the points from `first` on, by the sums of `DerivedExpansion`.
template <bool kRegular, bool kPair, u64 kGroups>
[[gnu::always_inline]] inline void addAtPoints(const RecursionTable& table,
                                               const DerivedExpansion& expansion,
                                               const double* centre, double scale,
                                               const ExpansionPoints& points, u64 first,
                                               const ExpansionSums& sums) {
  constexpr u64 kSums = kPair ? 4 : 3;
  const double* coefficients = expansion.data();
  const u64 degree = expansion.degree();
  HarmonicsWalk<kRegular, kGroups> walk(table, relativePoints<kGroups>(points, first, centre),
                                        scale);
  Lanes potential[kGroups] = {};
  Lanes gradientZ[kGroups] = {};
  walk.walkDegrees(0, degree, [&](u64 i, const Lanes(&value)[kGroups]) {
    for (u64 g = 0; g < kGroups; ++g) {
      potential[g] += value[g] * coefficients[2 * i];
      gradientZ[g] += value[g] * coefficients[2 * i + 1];
    }
  });
  coefficients += 2 * (degree + 1);
  ComplexLanes sum[kGroups] = {};    // of conj(v(m)) A(m), for the potential
  ComplexLanes slope[kGroups] = {};  // of m conj(v(m)) A(m), for the gradient
  Lanes radial[kGroups] = {};        // of conj(v(m)) D(m)
  for (u64 g = 0; g < kGroups; ++g) {
    potential[g] *= walk.w(g).re;
    gradientZ[g] *= walk.w(g).re;
  }
  for (u64 m = 1; m <= degree; ++m) {
    walk.raiseOrder(m);
    ComplexLanes order[kSums][kGroups] = {};
    walk.walkDegrees(m, degree, [&](u64 i, const Lanes(&value)[kGroups]) {
      const double* const c = coefficients + 2 * kSums * i;
      for (u64 k = 0; k < kSums; ++k) {
        for (u64 g = 0; g < kGroups; ++g) {
          order[k][g].re += value[g] * c[2 * k];
          order[k][g].im += value[g] * c[2 * k + 1];
        }
      }
    });
    coefficients += 2 * kSums * (degree - m + 1);
    for (u64 g = 0; g < kGroups; ++g) {
      const auto& [re, im] = walk.v(g);
      const auto times = [&re, &im](const ComplexLanes& a) {
        return ComplexLanes{re * a.re + im * a.im, re * a.im - im * a.re};
      };
      const ComplexLanes u = times(order[0][g]);
      const ComplexLanes h = kPair ? times(order[1][g]) : u;
      const ComplexLanes& b = order[kSums - 2][g];
      const ComplexLanes& d = order[kSums - 1][g];
      sum[g].re += u.re;
      sum[g].im += u.im;
      slope[g].re += h.re * static_cast<double>(m);
      slope[g].im += h.im * static_cast<double>(m);
      radial[g] += re * d.re + im * d.im;
      gradientZ[g] += walk.w(g).re * b.re + walk.w(g).im * b.im;
    }
  }
  for (u64 g = 0; g < kGroups; ++g, first += kNumLanes) {
    const u64 left = points.count - first;
    const Lanes x = walk.x(g);
    const Lanes y = walk.y(g);
    if constexpr (!kRegular) {
      slope[g].re *= walk.squared(g);
      slope[g].im *= walk.squared(g);
    }
    addUpTo(sums.potential + first, potential[g] + (x * sum[g].re + y * sum[g].im), left);
    addUpTo(sums.gradientX + first, slope[g].re + x * radial[g], left);
    addUpTo(sums.gradientY + first, slope[g].im + y * radial[g], left);
    addUpTo(sums.gradientZ + first, gradientZ[g], left);
  }
}

template <bool kRegular, bool kPair>
[[gnu::always_inline]] inline void expansionToPoints(const RecursionTable& table,
                                                     const DerivedExpansion& expansion,
                                                     const double* centre, double scale,
                                                     const ExpansionPoints& points,
                                                     const ExpansionSums& sums) {
  u64 first = 0;
  for (; first + (kGroups - 1) * kNumLanes < points.count; first += kGroups * kNumLanes)
    addAtPoints<kRegular, kPair, kGroups>(table, expansion, centre, scale, points, first, sums);
  for (; first < points.count; first += kNumLanes)
    addAtPoints<kRegular, kPair, 1>(table, expansion, centre, scale, points, first, sums);
}

template <bool kRegular>
[[gnu::always_inline]] inline void expansionToPoints(const RecursionTable& table,
                                                     const DerivedExpansion& expansion,
                                                     const double* centre, double scale,
                                                     const ExpansionPoints& points,
                                                     const ExpansionSums& sums) {
  if (expansion.isPair())
    expansionToPoints<kRegular, true>(table, expansion, centre, scale, points, sums);
  else
    expansionToPoints<kRegular, false>(table, expansion, centre, scale, points, sums);
}

void localToPoints(const RecursionTable& table, const DerivedExpansion& expansion,
                   const double* centre, double scale, const ExpansionPoints& points,
                   const ExpansionSums& sums) {
  expansionToPoints<true>(table, expansion, centre, scale, points, sums);
}

void multipoleToPoints(const RecursionTable& table, const DerivedExpansion& expansion,
                       const double* centre, double scale, const ExpansionPoints& points,
                       const ExpansionSums& sums) {
  expansionToPoints<false>(table, expansion, centre, scale, points, sums);
}
