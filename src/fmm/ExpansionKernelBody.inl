// The loops of ExpansionKernel, included once per instruction set into an unnamed namespace.
// Nothing here may call an inline function with external linkage, such as those of the standard
// library: its code would be built for the wider set and shared with all callers. Complex arrays
// are read as pairs of doubles.

using math::kNumLanes;
using math::Lanes;
using math::loadLanes;
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

/// The points [first, first + 8) relative to a centre; lanes behind the last repeat it, so that
/// they hold harmless numbers.
struct RelativePoints {
  Lanes x;
  Lanes y;
  Lanes z;
};

[[gnu::always_inline]] inline Lanes loadUpTo(const double* from, u64 count) {
  if (count >= kNumLanes) return loadLanes(from);
  Lanes v{};
  for (u64 l = 0; l < kNumLanes; ++l) v[l] = from[l < count ? l : count - 1];
  return v;
}

[[gnu::always_inline]] inline RelativePoints relativePoints(const ExpansionPoints& points,
                                                            u64 first, const double* centre) {
  const u64 left = points.count - first;
  return {loadUpTo(points.x + first, left) - centre[0],
          loadUpTo(points.y + first, left) - centre[1],
          loadUpTo(points.z + first, left) - centre[2]};
}

[[gnu::always_inline]] inline Lanes loadCharges(const double* charges, u64 left) {
  if (left >= kNumLanes) return loadLanes(charges);
  Lanes v{};
  for (u64 l = 0; l < left; ++l) v[l] = charges[l];
  return v;
}

/// Walks R(n, m) times a factor, m outer and n inner, and hands each to `use(place, n, m, value)`;
/// place counts the coefficients in this order.
template <class Use>
[[gnu::always_inline]] inline void walkRegular(const RecursionTable& table, u64 degree,
                                               const RelativePoints& d, double factor,
                                               const Use& use) {
  const Lanes r2 = d.x * d.x + d.y * d.y + d.z * d.z;
  const double* factors = table.regular();
  const u64 tableDegree = table.degree();
  ComplexLanes diagonal{Lanes{} + factor, Lanes{}};
  u64 place = 0;
  for (u64 m = 0; m <= degree; ++m) {
    if (m > 0) {
      const double half = 0.5 / static_cast<double>(m);
      diagonal = {(d.x * diagonal.re - d.y * diagonal.im) * half,
                  (d.x * diagonal.im + d.y * diagonal.re) * half};
    }
    ComplexLanes before = diagonal;
    use(place++, m, m, before);
    if (m == degree) break;
    ComplexLanes last{d.z * before.re, d.z * before.im};
    use(place++, m + 1, m, last);
    const double* f = factors + 4;
    for (u64 n = m + 2; n <= degree; ++n, f += 2) {
      const Lanes a = d.z * f[0];
      const Lanes b = r2 * f[1];
      const ComplexLanes next{a * last.re - b * before.re, a * last.im - b * before.im};
      before = last;
      last = next;
      use(place++, n, m, last);
    }
    factors += 2 * (tableDegree - m + 1);
  }
}

/// Walks S(n, m) in the same way.
template <class Use>
[[gnu::always_inline]] inline void walkSingular(const RecursionTable& table, u64 degree,
                                                const RelativePoints& d, double factor,
                                                const Use& use) {
  const Lanes inverse = 1.0 / (d.x * d.x + d.y * d.y + d.z * d.z);
  const Lanes x = d.x * inverse;
  const Lanes y = d.y * inverse;
  const Lanes z = d.z * inverse;
  const double* factors = table.singular();
  const u64 tableDegree = table.degree();
  ComplexLanes diagonal{root(inverse) * factor, Lanes{}};
  u64 place = 0;
  for (u64 m = 0; m <= degree; ++m) {
    if (m > 0) {
      const auto odd = static_cast<double>(2 * m - 1);
      diagonal = {(x * diagonal.re - y * diagonal.im) * odd,
                  (x * diagonal.im + y * diagonal.re) * odd};
    }
    ComplexLanes before = diagonal;
    use(place++, m, m, before);
    if (m == degree) break;
    const Lanes first = z * static_cast<double>(2 * m + 1);
    ComplexLanes last{first * before.re, first * before.im};
    use(place++, m + 1, m, last);
    const double* f = factors + 4;
    for (u64 n = m + 2; n <= degree; ++n, f += 2) {
      const Lanes a = z * f[0];
      const Lanes b = inverse * f[1];
      const ComplexLanes next{a * last.re - b * before.re, a * last.im - b * before.im};
      before = last;
      last = next;
      use(place++, n, m, last);
    }
    factors += 2 * (tableDegree - m + 1);
  }
}

/// Sums of charge times harmonic, one group of lanes per coefficient until the points are through.
template <bool kRegular>
[[gnu::always_inline]] inline void pointsToExpansion(const RecursionTable& table,
                                                     const ExpansionPoints& points,
                                                     const double* charges, const double* centre,
                                                     std::complex<double>* expansion,
                                                     double* sums) {
  const u64 degree = table.degree();
  for (u64 i = 0; i < (degree + 1) * (degree + 2); ++i) storeLanes(sums + i * kNumLanes, Lanes{});
  for (u64 first = 0; first < points.count; first += kNumLanes) {
    const RelativePoints d = relativePoints(points, first, centre);
    const Lanes q = loadCharges(charges + first, points.count - first);
    const auto use = [&](u64 place, u64, u64, const ComplexLanes& value) {
      double* const sum = sums + 2 * kNumLanes * place;
      const ComplexLanes before = loadPair(sum);
      storePair(sum, {before.re + q * value.re, before.im + q * value.im});
    };
    if constexpr (kRegular)
      walkRegular(table, degree, d, 1.0, use);
    else
      walkSingular(table, degree, d, 1.0, use);
  }
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

/// @pre `value` is not a product, which the compiler may join with the addition: full and partial
/// groups would then round differently.
[[gnu::always_inline]] inline void addUpTo(double* to, Lanes value, u64 count) {
  if (count >= kNumLanes) {
    storeLanes(to, loadLanes(to) + value);
    return;
  }
  for (u64 l = 0; l < count; ++l) to[l] += value[l];
}

template <bool kRegular>
[[gnu::always_inline]] inline void expansionToPoints(const RecursionTable& table,
                                                     const DerivedExpansion& expansion,
                                                     const double* centre, double scale,
                                                     const ExpansionPoints& points,
                                                     const ExpansionSums& sums) {
  const double* const coefficients = expansion.data();
  const u64 degree = expansion.degree();
  for (u64 first = 0; first < points.count; first += kNumLanes) {
    const RelativePoints d = relativePoints(points, first, centre);
    Lanes u{};
    Lanes gx{};
    Lanes gy{};
    Lanes gz{};
    const auto use = [&](u64 place, u64, u64, const ComplexLanes& value) {
      const double* const c = coefficients + 8 * place;
      u += value.re * c[0] + value.im * c[1];
      gx += value.re * c[2] + value.im * c[3];
      gy += value.re * c[4] + value.im * c[5];
      gz += value.re * c[6] + value.im * c[7];
    };
    if constexpr (kRegular)
      walkRegular(table, degree, d, scale, use);
    else
      walkSingular(table, degree, d, scale, use);
    const u64 left = points.count - first;
    addUpTo(sums.potential + first, u, left);
    addUpTo(sums.gradientX + first, gx, left);
    addUpTo(sums.gradientY + first, gy, left);
    addUpTo(sums.gradientZ + first, gz, left);
  }
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

[[gnu::always_inline]] inline Lanes gather(const double* const* from, u64 i) {
  static_assert(kNumLanes == 8);
  return Lanes{from[0][i], from[1][i], from[2][i], from[3][i],
               from[4][i], from[5][i], from[6][i], from[7][i]};
}

/// Gathers the batch into lanes, turned by -phi about z: x(n, m) = c(n, m) e^(-i m phi).
[[gnu::always_inline]] inline void gatherTurned(u64 degree, const ExpansionBatch& batch,
                                                const double* phases, double* to) {
  const double* from[kNumLanes];
  for (u64 l = 0; l < kNumLanes; ++l) from[l] = parts(batch.from[l < batch.count ? l : 0]);
  for (u64 n = 0, index = 0; n <= degree; ++n) {
    for (u64 m = 0; m <= n; ++m, ++index) {
      const ComplexLanes c{gather(from, 2 * index), gather(from, 2 * index + 1)};
      const double cosine = phases[2 * m];
      const double sine = phases[2 * m + 1];
      storePair(to + 2 * kNumLanes * index,
                {c.re * cosine + c.im * sine, c.im * cosine - c.re * sine});
    }
  }
}

/// y(n, k) = sum over m of the folded matrices' rows k times x(n, m).
[[gnu::always_inline]] inline ComplexLanes rotated(const double* real, const double* imaginary,
                                                   u64 numColumns, const double* x) {
  Lanes re{};
  Lanes im{};
  for (u64 m = 0; m < numColumns; ++m, x += 2 * kNumLanes) {
    re += loadLanes(x) * real[m];
    im += loadLanes(x + kNumLanes) * imaginary[m];
  }
  return {re, im};
}

[[gnu::always_inline]] inline void rotate(u64 degree, const double* real, const double* imaginary,
                                          const double* x, double* y) {
  for (u64 n = 0; n <= degree; ++n) {
    for (u64 k = 0; k <= n; ++k, real += n + 1, imaginary += n + 1)
      storePair(y + 2 * kNumLanes * k, rotated(real, imaginary, n + 1, x));
    x += 2 * kNumLanes * (n + 1);
    y += 2 * kNumLanes * (n + 1);
  }
}

/// Rotates back, turns by phi and adds to the batch.
[[gnu::always_inline]] inline void addRotatedBack(u64 degree, const TranslationStep& step,
                                                  const double* x, const ExpansionBatch& batch) {
  const double* real = step.backwardReal;
  const double* imaginary = step.backwardImaginary;
  const double* const phases = parts(step.phases);
  for (u64 n = 0, index = 0; n <= degree; ++n) {
    for (u64 k = 0; k <= n; ++k, ++index, real += n + 1, imaginary += n + 1) {
      const ComplexLanes y = rotated(real, imaginary, n + 1, x);
      const double cosine = phases[2 * k];
      const double sine = phases[2 * k + 1];
      const Lanes re = y.re * cosine - y.im * sine;
      const Lanes im = y.im * cosine + y.re * sine;
      for (u64 l = 0; l < batch.count; ++l) {
        double* const out = parts(batch.to[l]) + 2 * index;
        out[0] += re[l];
        out[1] += im[l];
      }
    }
    x += 2 * kNumLanes * (n + 1);
  }
}

/// Multiplies the coefficients of degree n by factors[n].
[[gnu::always_inline]] inline void scaleDegrees(u64 degree, const double* factors, double* x) {
  for (u64 n = 0; n <= degree; ++n)
    for (u64 i = 0; i < 2 * (n + 1); ++i, x += kNumLanes) storeLanes(x, loadLanes(x) * factors[n]);
}

/// Rotate, translate along z to `along(n, m, rotated)`, rotate back and add.
template <class Translate>
[[gnu::always_inline]] inline void translate(u64 degree, const TranslationStep& step,
                                             const ExpansionBatch& batch, double* scratch,
                                             const Translate& along) {
  double* const first = scratch;
  double* const second = scratch + kNumLanes * (degree + 1) * (degree + 2);
  gatherTurned(degree, batch, parts(step.phases), first);
  rotate(degree, step.forwardReal, step.forwardImaginary, first, second);
  if (step.scales != nullptr) scaleDegrees(degree, step.scales, second);
  for (u64 n = 0; n <= degree; ++n)
    for (u64 m = 0; m <= n; ++m)
      storePair(first + 2 * kNumLanes * (n * (n + 1) / 2 + m), along(n, m, second));
  if (step.scales != nullptr) scaleDegrees(degree, step.scales + 1, first);
  addRotatedBack(degree, step, first, batch);
}

[[gnu::always_inline]] inline const double* coefficient(const double* x, u64 n, u64 m) {
  return x + 2 * kNumLanes * (n * (n + 1) / 2 + m);
}

void multipoleToMultipole(u64 degree, const TranslationStep& step, const ExpansionBatch& batch,
                          double* scratch) {
  translate(degree, step, batch, scratch, [&](u64 n, u64 m, const double* x) {
    ComplexLanes t{};
    for (u64 j = 0; j <= n - m; ++j) {
      const ComplexLanes c = loadPair(coefficient(x, n - j, m));
      t.re += c.re * step.factors[j];
      t.im += c.im * step.factors[j];
    }
    return t;
  });
}

void multipoleToLocal(u64 degree, const TranslationStep& step, const ExpansionBatch& batch,
                      double* scratch) {
  translate(degree, step, batch, scratch, [&](u64 n, u64 m, const double* x) {
    ComplexLanes even{};
    ComplexLanes odd{};
    for (u64 j = m; j <= degree; j += 2) {
      const ComplexLanes c = loadPair(coefficient(x, j, m));
      even.re += c.re * step.factors[n + j];
      even.im += c.im * step.factors[n + j];
    }
    for (u64 j = m + 1; j <= degree; j += 2) {
      const ComplexLanes c = loadPair(coefficient(x, j, m));
      odd.re += c.re * step.factors[n + j];
      odd.im += c.im * step.factors[n + j];
    }
    return ComplexLanes{even.re - odd.re, even.im - odd.im};
  });
}

void localToLocal(u64 degree, const TranslationStep& step, const ExpansionBatch& batch,
                  double* scratch) {
  translate(degree, step, batch, scratch, [&](u64 n, u64 m, const double* x) {
    ComplexLanes t{};
    for (u64 j = 0; j <= degree - n; ++j) {
      const ComplexLanes c = loadPair(coefficient(x, n + j, m));
      t.re += c.re * step.factors[j];
      t.im += c.im * step.factors[j];
    }
    return t;
  });
}
