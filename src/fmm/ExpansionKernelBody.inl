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

/// Runs over the harmonics R(n, m) or S(n, m) times a factor, m outer and n inner. Each is the
/// product of w(m), a multiple of (x + iy)^m, and a real polynomial q(n, m) in z and r^2 (S: z /
/// r^2 and 1 / r^2) with q(m, m) = 1, so that the recursion in n is real:
///   q(n, m) = z f q(n - 1, m) - r^2 g q(n - 2, m), f and g from the table.
template <bool kRegular, u64 kGroups>
class HarmonicsWalk {
 public:
  [[gnu::always_inline]] HarmonicsWalk(const RecursionTable& table,
                                       const RelativePoints<kGroups>& d, double factor)
      : d_(d), factors_(kRegular ? table.regular() : table.singular()), degree_(table.degree()) {
    for (u64 g = 0; g < kGroups; ++g) {
      squared_[g] = d.x[g] * d.x[g] + d.y[g] * d.y[g] + d.z[g] * d.z[g];
      w_[g] = {Lanes{} + factor, Lanes{}};
      if constexpr (!kRegular) {
        squared_[g] = 1.0 / squared_[g];
        d_.x[g] *= squared_[g];
        d_.y[g] *= squared_[g];
        d_.z[g] *= squared_[g];
        w_[g].re *= root(squared_[g]);
      }
    }
  }

  /// Advances from w(m - 1) to w(m).
  [[gnu::always_inline]] void raiseOrder(u64 m) {
    const double factor = kRegular ? 0.5 / static_cast<double>(m) : static_cast<double>(2 * m - 1);
    for (u64 g = 0; g < kGroups; ++g)
      w_[g] = {(d_.x[g] * w_[g].re - d_.y[g] * w_[g].im) * factor,
               (d_.x[g] * w_[g].im + d_.y[g] * w_[g].re) * factor};
  }

  /// Calls `use(place, q)` with q(n, m) of every group for n = m to `degree`; place numbers the
  /// coefficients in the order of the loops. Orders must come one after the other from 0 on.
  template <class Use>
  [[gnu::always_inline]] void walkDegrees(u64 m, u64 degree, const Use& use) {
    Lanes before[kGroups];
    for (u64 g = 0; g < kGroups; ++g) before[g] = Lanes{} + 1.0;
    use(place_++, before);
    if (m == degree) return;
    const double first = kRegular ? 1.0 : static_cast<double>(2 * m + 1);
    Lanes last[kGroups];
    for (u64 g = 0; g < kGroups; ++g) last[g] = d_.z[g] * first;
    use(place_++, last);
    const double* f = factors_ + 4;
    for (u64 n = m + 2; n <= degree; ++n, f += 2) {
      for (u64 g = 0; g < kGroups; ++g) {
        const Lanes next = (d_.z[g] * f[0]) * last[g] - (squared_[g] * f[1]) * before[g];
        before[g] = last[g];
        last[g] = next;
      }
      use(place_++, last);
    }
    factors_ += 2 * (degree_ - m + 1);
  }

  [[nodiscard, gnu::always_inline]] const ComplexLanes& w(u64 group) const { return w_[group]; }

 private:
  RelativePoints<kGroups> d_;
  Lanes squared_[kGroups];
  ComplexLanes w_[kGroups];
  const double* factors_;
  u64 degree_;
  u64 place_ = 0;
};

/// Adds charge times harmonic of the points from `first` on to one group of lanes per coefficient.
template <bool kRegular, u64 kGroups>
[[gnu::always_inline]] inline void addPoints(const RecursionTable& table,
                                             const ExpansionPoints& points, const double* charges,
                                             const double* centre, u64 first, double* sums) {
  const u64 degree = table.degree();
  HarmonicsWalk<kRegular, kGroups> walk(table, relativePoints<kGroups>(points, first, centre), 1.0);
  Lanes q[kGroups];
  for (u64 g = 0; g < kGroups; ++g) {
    const u64 at = first + g * kNumLanes;
    q[g] = loadCharges(charges + at, points.count - at);
  }
  for (u64 m = 0; m <= degree; ++m) {
    if (m > 0) walk.raiseOrder(m);
    ComplexLanes w[kGroups];
    for (u64 g = 0; g < kGroups; ++g) w[g] = {q[g] * walk.w(g).re, q[g] * walk.w(g).im};
    walk.walkDegrees(m, degree, [&](u64 place, const Lanes(&value)[kGroups]) {
      double* const sum = sums + 2 * kNumLanes * place;
      ComplexLanes total = loadPair(sum);
      for (u64 g = 0; g < kGroups; ++g) {
        total.re += w[g].re * value[g];
        total.im += w[g].im * value[g];
      }
      storePair(sum, total);
    });
  }
}

template <bool kRegular>
[[gnu::always_inline]] inline void pointsToExpansion(const RecursionTable& table,
                                                     const ExpansionPoints& points,
                                                     const double* charges, const double* centre,
                                                     std::complex<double>* expansion,
                                                     double* sums) {
  const u64 degree = table.degree();
  for (u64 i = 0; i < (degree + 1) * (degree + 2); ++i) storeLanes(sums + i * kNumLanes, Lanes{});
  u64 first = 0;
  for (; first + (kGroups - 1) * kNumLanes < points.count; first += kGroups * kNumLanes)
    addPoints<kRegular, kGroups>(table, points, charges, centre, first, sums);
  for (; first < points.count; first += kNumLanes)
    addPoints<kRegular, 1>(table, points, charges, centre, first, sums);
  double* const out = parts(expansion);
  for (u64 m = 0, place = 0; m <= degree; ++m) {
    for (u64 n = m; n <= degree; ++n, ++place) {
      const u64 index = n * (n + 1) / 2 + m;
      const ComplexLanes sum = loadPair(sums + 2 * kNumLanes * place);
      out[2 * index] += math::sumOfLanes(sum.re);
      out[2 * index + 1] += math::sumOfLanes(sum.im);
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

/// Adds potential and gradient at the points from `first` on: the sum over m of the real part of
/// w(m) times the conjugate of sum over n of q(n, m) c(n, m), four such sums at once.
template <bool kRegular, u64 kGroups>
[[gnu::always_inline]] inline void addAtPoints(const RecursionTable& table,
                                               const DerivedExpansion& expansion,
                                               const double* centre, double scale,
                                               const ExpansionPoints& points, u64 first,
                                               const ExpansionSums& sums) {
  const double* const coefficients = expansion.data();
  const u64 degree = expansion.degree();
  HarmonicsWalk<kRegular, kGroups> walk(table, relativePoints<kGroups>(points, first, centre),
                                        scale);
  Lanes total[4][kGroups] = {};
  for (u64 m = 0; m <= degree; ++m) {
    if (m > 0) walk.raiseOrder(m);
    ComplexLanes order[4][kGroups] = {};
    walk.walkDegrees(m, degree, [&](u64 place, const Lanes(&value)[kGroups]) {
      const double* const c = coefficients + 8 * place;
      for (u64 i = 0; i < 4; ++i) {
        for (u64 g = 0; g < kGroups; ++g) {
          order[i][g].re += value[g] * c[2 * i];
          order[i][g].im += value[g] * c[2 * i + 1];
        }
      }
    });
    for (u64 i = 0; i < 4; ++i)
      for (u64 g = 0; g < kGroups; ++g)
        total[i][g] += walk.w(g).re * order[i][g].re + walk.w(g).im * order[i][g].im;
  }
  for (u64 g = 0; g < kGroups; ++g, first += kNumLanes) {
    const u64 left = points.count - first;
    addUpTo(sums.potential + first, total[0][g], left);
    addUpTo(sums.gradientX + first, total[1][g], left);
    addUpTo(sums.gradientY + first, total[2][g], left);
    addUpTo(sums.gradientZ + first, total[3][g], left);
  }
}

template <bool kRegular>
[[gnu::always_inline]] inline void expansionToPoints(const RecursionTable& table,
                                                     const DerivedExpansion& expansion,
                                                     const double* centre, double scale,
                                                     const ExpansionPoints& points,
                                                     const ExpansionSums& sums) {
  u64 first = 0;
  for (; first + (kGroups - 1) * kNumLanes < points.count; first += kGroups * kNumLanes)
    addAtPoints<kRegular, kGroups>(table, expansion, centre, scale, points, first, sums);
  for (; first < points.count; first += kNumLanes)
    addAtPoints<kRegular, 1>(table, expansion, centre, scale, points, first, sums);
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
