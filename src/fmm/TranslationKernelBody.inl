// The loops of ExpansionKernel between expansions, included after ExpansionKernelBody.inl, whose
// rules apply here too. The set defines how many rows of a rotation are computed together, `kRows`.

/// Loads number i of every expansion of the batch into group i of lanes, eight at a time.
[[gnu::always_inline]] inline void gather(u64 numDoubles, const ExpansionBatch& batch, double* to) {
  const double* from[kNumLanes];
  for (u64 l = 0; l < kNumLanes; ++l) from[l] = parts(batch.from[l < batch.count ? l : 0]);
  u64 i = 0;
  for (; i + kNumLanes <= numDoubles; i += kNumLanes) {
    Lanes v[kNumLanes];
    for (u64 l = 0; l < kNumLanes; ++l) v[l] = loadLanes(from[l] + i);
    math::transpose(v);
    for (u64 l = 0; l < kNumLanes; ++l) storeLanes(to + (i + l) * kNumLanes, v[l]);
  }
  for (; i < numDoubles; ++i)
    for (u64 l = 0; l < kNumLanes; ++l) to[i * kNumLanes + l] = from[l][i];
}

/// Adds group i of lanes to number i of every expansion of the batch.
[[gnu::always_inline]] inline void scatterAdd(u64 numDoubles, const double* from,
                                              const ExpansionBatch& batch) {
  u64 i = 0;
  for (; i + kNumLanes <= numDoubles; i += kNumLanes) {
    Lanes v[kNumLanes];
    for (u64 l = 0; l < kNumLanes; ++l) v[l] = loadLanes(from + (i + l) * kNumLanes);
    math::transpose(v);
    for (u64 l = 0; l < batch.count; ++l) {
      double* const to = parts(batch.to[l]) + i;
      storeLanes(to, loadLanes(to) + v[l]);
    }
  }
  for (; i < numDoubles; ++i)
    for (u64 l = 0; l < batch.count; ++l) parts(batch.to[l])[i] += from[i * kNumLanes + l];
}

/// Rotates by -phi about z: x(n, m) = c(n, m) e^(-i m phi).
[[gnu::always_inline]] inline void turn(u64 degree, const double* phases, double* x) {
  for (u64 n = 0; n <= degree; ++n) {
    for (u64 m = 0; m <= n; ++m, x += 2 * kNumLanes) {
      const ComplexLanes c = loadPair(x);
      const double cosine = phases[2 * m];
      const double sine = phases[2 * m + 1];
      storePair(x, {c.re * cosine + c.im * sine, c.im * cosine - c.re * sine});
    }
  }
}

/// Calls `body(Rows<R>{}, first)` for consecutive rows [first, first + R) of `numRows`, R a power
/// of two as large as fits. Rows that are computed together share what they load.
template <u64 R>
struct Rows {};
template <u64 R, class Body>
[[gnu::always_inline]] inline void forBlocks(Rows<R>, u64 first, u64 numRows, const Body& body) {
  for (; first + R <= numRows; first += R) body(Rows<R>{}, first);
  if constexpr (R > 1) forBlocks(Rows<R / 2>{}, first, numRows, body);
}

/// y(n, k) = sum over m of row k of the folded matrices times x(n, m), for R rows.
template <u64 R>
[[gnu::always_inline]] inline void rotateRows(const double* real, const double* imaginary,
                                              u64 numColumns, const double* x,
                                              ComplexLanes (&y)[R]) {
  for (u64 m = 0; m < numColumns; ++m, x += 2 * kNumLanes) {
    const ComplexLanes value = loadPair(x);
    for (u64 r = 0; r < R; ++r) {
      y[r].re += value.re * real[r * numColumns + m];
      y[r].im += value.im * imaginary[r * numColumns + m];
    }
  }
}

/// Calls `use(n, k, y)` with each y(n, k).
template <class Use>
[[gnu::always_inline]] inline void rotate(u64 degree, const double* real, const double* imaginary,
                                          const double* x, const Use& use) {
  for (u64 n = 0; n <= degree; ++n) {
    const u64 size = n + 1;
    forBlocks(Rows<kRows>{}, 0, size, [&]<u64 R>(Rows<R>, u64 k) {
      ComplexLanes y[R] = {};
      rotateRows(real + k * size, imaginary + k * size, size, x, y);
      for (u64 r = 0; r < R; ++r) use(n, k + r, y[r]);
    });
    real += size * size;
    imaginary += size * size;
    x += 2 * kNumLanes * size;
  }
}

[[gnu::always_inline]] inline u64 offsetOf(u64 n, u64 m) {
  return 2 * kNumLanes * (n * (n + 1) / 2 + m);
}

/// Multiplies the coefficients of degree n by factors[n].
[[gnu::always_inline]] inline void scaleDegrees(u64 degree, const double* factors, double* x) {
  for (u64 n = 0; n <= degree; ++n)
    for (u64 i = 0; i < 2 * (n + 1); ++i, x += kNumLanes) storeLanes(x, loadLanes(x) * factors[n]);
}

/// Rotate to the direction, translate along z by `along(m, rotated, translated)`, rotate back and
/// add.
template <class Translate>
[[gnu::always_inline]] inline void translate(u64 degree, const TranslationStep& step,
                                             const ExpansionBatch& batch, double* scratch,
                                             const Translate& along) {
  double* const first = alignedToLanes(scratch);
  double* const second = first + kNumLanes * (degree + 1) * (degree + 2);
  const double* const phases = parts(step.phases);
  const u64 numDoubles = (degree + 1) * (degree + 2);
  gather(numDoubles, batch, first);
  turn(degree, phases, first);
  rotate(degree, step.forwardReal, step.forwardImaginary, first,
         [second](u64 n, u64 k, const ComplexLanes& y) { storePair(second + offsetOf(n, k), y); });
  if (step.scales != nullptr) scaleDegrees(degree, step.scales, second);
  for (u64 m = 0; m <= degree; ++m) along(m, second, first);
  if (step.scales != nullptr) scaleDegrees(degree, step.scales + 1, first);
  rotate(degree, step.backwardReal, step.backwardImaginary, first,
         [second, phases](u64 n, u64 k, const ComplexLanes& y) {
           const double cosine = phases[2 * k];
           const double sine = phases[2 * k + 1];
           storePair(second + offsetOf(n, k),
                     {y.re * cosine - y.im * sine, y.im * cosine + y.re * sine});
         });
  scatterAdd(numDoubles, second, batch);
}

void multipoleToMultipole(u64 degree, const TranslationStep& step, const ExpansionBatch& batch,
                          double* scratch) {
  translate(degree, step, batch, scratch, [&](u64 m, const double* x, double* to) {
    for (u64 n = m; n <= degree; ++n) {
      ComplexLanes t{};
      for (u64 j = 0; j <= n - m; ++j) {
        const ComplexLanes c = loadPair(x + offsetOf(n - j, m));
        t.re += c.re * step.factors[j];
        t.im += c.im * step.factors[j];
      }
      storePair(to + offsetOf(n, m), t);
    }
  });
}

void multipoleToLocal(u64 degree, const TranslationStep& step, const ExpansionBatch& batch,
                      double* scratch) {
  translate(degree, step, batch, scratch, [&](u64 m, const double* x, double* to) {
    forBlocks(Rows<kRows>{}, m, degree + 1, [&]<u64 R>(Rows<R>, u64 n) {
      ComplexLanes t[R] = {};
      for (u64 j = m; j <= degree; ++j) {
        ComplexLanes c = loadPair(x + offsetOf(j, m));
        if ((j - m) % 2 != 0) c = {0.0 - c.re, 0.0 - c.im};
        const double* const factors = step.factors + n + j;
        for (u64 r = 0; r < R; ++r) {
          t[r].re += c.re * factors[r];
          t[r].im += c.im * factors[r];
        }
      }
      for (u64 r = 0; r < R; ++r) storePair(to + offsetOf(n + r, m), t[r]);
    });
  });
}

void localToLocal(u64 degree, const TranslationStep& step, const ExpansionBatch& batch,
                  double* scratch) {
  translate(degree, step, batch, scratch, [&](u64 m, const double* x, double* to) {
    for (u64 n = m; n <= degree; ++n) {
      ComplexLanes t{};
      for (u64 j = 0; j <= degree - n; ++j) {
        const ComplexLanes c = loadPair(x + offsetOf(n + j, m));
        t.re += c.re * step.factors[j];
        t.im += c.im * step.factors[j];
      }
      storePair(to + offsetOf(n, m), t);
    }
  });
}
