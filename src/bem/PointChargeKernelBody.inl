// The loops of PointChargeKernel, included once per instruction set into an unnamed namespace that
// already contains the set's operations on lanes and `kGroups`. Nothing here may call an inline
// function of the standard library: its code would be compiled for the wider set and shared with
// all callers.

using math::kNumLanes;
using math::storeLanes;
using math::whereSet;

struct Sums {
  Lanes potential;
  Lanes x;
  Lanes y;
  Lanes z;
};

/// Whether every lane of the sums is a finite number: x - x is zero exactly then. Distances for
/// which an inverse root may be wrong, including zero, show up in the gradient.
[[gnu::always_inline]] inline bool allFinite(const Sums& sums) {
  const Lanes zero =
      (sums.potential - sums.potential) + (sums.x - sums.x) + (sums.y - sums.y) + (sums.z - sums.z);
  return bitsOf(zero == Lanes{}) == 0xffU;
}

/// Lanes of as many targets.
[[gnu::always_inline]] inline u64 numLanesOf(u64 numTargets) {
  const u64 numGroups = numTargets / kNumLanes + (numTargets >> 2U & 1U) + (numTargets >> 1U & 1U) +
                        (numTargets & 1U);
  return numGroups * kNumLanes;
}

/// The first lane of each target in a group of lanes.
template <u64 kCopies>
constexpr unsigned kFirstLanes = kCopies == 1   ? 0xffU
                                 : kCopies == 2 ? 0x55U
                                 : kCopies == 4 ? 0x11U
                                                : 0x01U;

/// Division and square root, correct for every distance, including zero.
inline void addPairwise(const PointCharges& charges, const TargetLanes& targets, u64 first,
                        unsigned lanes) {
  for (u64 l = 0; l < kNumLanes; ++l) {
    if ((lanes >> l & 1U) == 0) continue;
    const u64 t = first + l;
    double sum[4] = {};
    for (u64 q = 0; q < charges.count; ++q) {
      const double dx = targets.x[t] - charges.x[q];
      const double dy = targets.y[t] - charges.y[q];
      const double dz = targets.z[t] - charges.z[q];
      const double s = 1.0 / __builtin_sqrt(dx * dx + dy * dy + dz * dz);
      const double w = charges.forGradient[q] * s * (s * s);
      sum[0] += charges.forPotential[q] * s;
      sum[1] += w * dx;
      sum[2] += w * dy;
      sum[3] += w * dz;
    }
    targets.potential[t] += sum[0];
    targets.gradientX[t] -= sum[1];
    targets.gradientY[t] -= sum[2];
    targets.gradientZ[t] -= sum[3];
  }
}

/// A charge for all lanes, or one per lane.
template <class Value>
struct ChargeValues {
  Value x;
  Value y;
  Value z;
  Value forPotential;
  Value forGradient;
};

/// kCopies charges from number q on, for the lanes of every target in a group.
template <u64 kCopies>
[[gnu::always_inline]] inline auto chargesAt(const PointCharges& c, u64 q) {
  if constexpr (kCopies == 1)
    return ChargeValues<double>{c.x[q], c.y[q], c.z[q], c.forPotential[q], c.forGradient[q]};
  else
    return ChargeValues<Lanes>{loadRepeated<kCopies>(c.x + q), loadRepeated<kCopies>(c.y + q),
                               loadRepeated<kCopies>(c.z + q),
                               loadRepeated<kCopies>(c.forPotential + q),
                               loadRepeated<kCopies>(c.forGradient + q)};
}

/// The last `left` charges from number q on, one per lane.
[[gnu::always_inline]] inline ChargeValues<Lanes> lastCharges(const PointCharges& c, u64 q,
                                                              u64 left) {
  return {loadFirst(c.x + q, left), loadFirst(c.y + q, left), loadFirst(c.z + q, left),
          loadFirst(c.forPotential + q, left), loadFirst(c.forGradient + q, left)};
}

/// One group of lanes: the coordinates of its targets, and which of its lanes are needed.
struct Group {
  Lanes x;
  Lanes y;
  Lanes z;
  LaneMask wanted;
};

template <bool kMasked, class Value>
[[gnu::always_inline]] inline void addCharge(const ChargeValues<Value>& c, const Group& targets,
                                             LaneMask wanted, Sums& sums) {
  const Lanes dx = targets.x - c.x;
  const Lanes dy = targets.y - c.y;
  const Lanes dz = targets.z - c.z;
  Lanes s = inverseRoot(dx * dx + dy * dy + dz * dz);
  if constexpr (kMasked) s = whereSet(wanted, s);
  const Lanes w = (c.forGradient * s) * (s * s);
  sums.potential += c.forPotential * s;
  sums.x += w * dx;
  sums.y += w * dy;
  sums.z += w * dz;
}

/// The charges from number q on, fewer than the lanes of a target.
template <u64 kCopies>
[[gnu::always_inline]] inline void addLastCharges(const PointCharges& charges, u64 q,
                                                  const Group& targets, unsigned bits, Sums& sums) {
  if constexpr (kCopies == kNumLanes) {
    const u64 left = charges.count - q;
    if (left == 0) return;
    addCharge<true>(lastCharges(charges, q, left), targets, laneMask(bits & ((1U << left) - 1U)),
                    sums);
  } else if constexpr (kCopies > 1) {
    const LaneMask first = laneMask(bits & kFirstLanes<kCopies>);
    for (; q < charges.count; ++q) addCharge<true>(chargesAt<1>(charges, q), targets, first, sums);
  }
}

/// All charges at `Groups` neighbouring groups of lanes, which hides the latency of the chain from
/// distance to sum.
template <u64 Groups, u64 kCopies, bool kMasked>
[[gnu::always_inline]] inline void addToGroups(const PointCharges& charges,
                                               const TargetLanes& targets, u64 first,
                                               const std::uint8_t* mask) {
  Group group[Groups];
  unsigned bits[Groups];
  Sums sums[Groups] = {};
  for (u64 g = 0; g < Groups; ++g) {
    const u64 t = first + g * kNumLanes;
    bits[g] = kMasked ? mask[t / kNumLanes] : 0xffU;
    group[g] = {loadLanes(targets.x + t), loadLanes(targets.y + t), loadLanes(targets.z + t),
                laneMask(bits[g])};
  }
  u64 q = 0;
  for (; q + kCopies <= charges.count; q += kCopies)
    for (u64 g = 0; g < Groups; ++g)
      addCharge<kMasked>(chargesAt<kCopies>(charges, q), group[g], group[g].wanted, sums[g]);
  for (u64 g = 0; g < Groups; ++g) addLastCharges<kCopies>(charges, q, group[g], bits[g], sums[g]);
  for (u64 g = 0; g < Groups; ++g) {
    const u64 t = first + g * kNumLanes;
    if (!allFinite(sums[g])) {
      addPairwise(charges, targets, t, bits[g] & kFirstLanes<kCopies>);
      continue;
    }
    storeLanes(targets.potential + t, loadLanes(targets.potential + t) + sums[g].potential);
    storeLanes(targets.gradientX + t, loadLanes(targets.gradientX + t) - sums[g].x);
    storeLanes(targets.gradientY + t, loadLanes(targets.gradientY + t) - sums[g].y);
    storeLanes(targets.gradientZ + t, loadLanes(targets.gradientZ + t) - sums[g].z);
  }
}

/// Calls `visit.template operator()<kCopies>(lane)` for the groups after the full ones.
template <class Visit>
[[gnu::always_inline]] inline void forEachLastGroup(u64 numTargets, const Visit& visit) {
  u64 lane = numTargets / kNumLanes * kNumLanes;
  if ((numTargets & 4U) != 0) {
    visit.template operator()<2>(lane);
    lane += kNumLanes;
  }
  if ((numTargets & 2U) != 0) {
    visit.template operator()<4>(lane);
    lane += kNumLanes;
  }
  if ((numTargets & 1U) != 0) visit.template operator()<8>(lane);
}

void add(const PointCharges& charges, const TargetLanes& targets) {
  u64 t = 0;
  for (; t + kGroups * kNumLanes <= targets.count; t += kGroups * kNumLanes)
    addToGroups<kGroups, 1, false>(charges, targets, t, nullptr);
  for (; t + kNumLanes <= targets.count; t += kNumLanes)
    addToGroups<1, 1, false>(charges, targets, t, nullptr);
  forEachLastGroup(targets.count, [&]<u64 kCopies>(u64 lane) {
    addToGroups<1, kCopies, false>(charges, targets, lane, nullptr);
  });
}

void addMasked(const PointCharges& charges, const TargetLanes& targets, const std::uint8_t* mask) {
  for (u64 t = 0; t + kNumLanes <= targets.count; t += kNumLanes)
    if (mask[t / kNumLanes] != 0) addToGroups<1, 1, true>(charges, targets, t, mask);
  forEachLastGroup(targets.count, [&]<u64 kCopies>(u64 lane) {
    if (mask[lane / kNumLanes] != 0) addToGroups<1, kCopies, true>(charges, targets, lane, mask);
  });
}

/// Bits of eight elements, see nearCandidates.
[[gnu::always_inline]] inline unsigned candidatesOfEight(const TargetBox& box,
                                                         const double* centres, const double* sizes,
                                                         double minRelDist) {
  Lanes squared{};
  for (u64 axis = 0; axis < 3; ++axis) {
    const Lanes c = loadStrided(centres + axis, 3);
    const Lanes below = box.lower[axis] - c;
    const Lanes above = c - box.upper[axis];
    // At most one of them is positive.
    const Lanes outside = whereSet(below > Lanes{}, below) + whereSet(above > Lanes{}, above);
    squared += outside * outside;
  }
  const Lanes range = loadLanes(sizes) * (1.000001 * minRelDist);
  // NaN counts as near.
  return ~bitsOf(squared > range * range) & 0xffU;
}

// Some of the last eight may have been checked already; fewer than eight are padded.
u64 nearCandidates(const TargetBox& box, const ElementSpheres& elements, double minRelDist) {
  const auto bitsFrom = [&](u64 e) {
    return u64{candidatesOfEight(box, elements.centres + 3 * e, elements.sizes + e, minRelDist)}
           << e;
  };
  u64 result = 0;
  u64 e = 0;
  for (; e + kNumLanes <= elements.count; e += kNumLanes) result |= bitsFrom(e);
  if (e == elements.count) return result;
  if (e > 0) return result | bitsFrom(elements.count - kNumLanes);
  double centres[3 * kNumLanes] = {};
  double sizes[kNumLanes] = {};
  for (u64 i = 0; i < 3 * elements.count; ++i) centres[i] = elements.centres[i];
  for (u64 i = 0; i < elements.count; ++i) sizes[i] = elements.sizes[i];
  return candidatesOfEight(box, centres, sizes, minRelDist) & ((1U << elements.count) - 1U);
}

// Squares decide, except within 1e-12 of the limit or outside the range in which squares keep their
// digits; there the root and the division of the definition are used.
bool markFar(const TargetLanes& targets, const SizedPoint& centre, double minRelDist,
             std::uint8_t* mask) {
  constexpr double kSmallest = 1e-280;
  const double reach = minRelDist * centre.size;
  const double limit = reach > 0.0 ? reach * reach : 0.0;
  const double farFrom = (limit > kSmallest ? limit : kSmallest) * (1.0 + 1e-12);
  const double nearUpTo = limit > kSmallest ? limit * (1.0 - 1e-12) : 0.0;
  unsigned all = 0xffU;
  const u64 numLanes = numLanesOf(targets.count);
  for (u64 t = 0; t < numLanes; t += kNumLanes) {
    const Lanes dx = loadLanes(targets.x + t) - centre.x;
    const Lanes dy = loadLanes(targets.y + t) - centre.y;
    const Lanes dz = loadLanes(targets.z + t) - centre.z;
    const Lanes squared = dx * dx + dy * dy + dz * dz;
    unsigned bits = bitsOf(squared > Lanes{} + farFrom);
    if ((bits | bitsOf(squared < Lanes{} + nearUpTo)) != 0xffU) {
      const Lanes ratio = root(squared) / centre.size;
      // A NaN ratio is not below the limit either.
      bits = ~bitsOf(ratio < minRelDist) & 0xffU;
    }
    mask[t / kNumLanes] = static_cast<std::uint8_t>(bits);
    all &= bits;
  }
  return all != 0xffU;
}

/// |x - y(centre)| of eight cells, the children of two.
[[gnu::always_inline]] inline Lanes distanceToSiblings(const CellCentres& centres,
                                                       const double* nodes,
                                                       const SizedPoint& target,
                                                       std::uint32_t first, std::uint32_t second) {
  Lanes x{};
  Lanes y{};
  Lanes z{};
  for (u64 k = 0; k < centres.numNodes; ++k) {
    const double* const row = centres.basis + k * centres.stride;
    const Lanes n = loadHalves(row + first, row + second);
    x += n * nodes[3 * k];
    y += n * nodes[3 * k + 1];
    z += n * nodes[3 * k + 2];
  }
  const Lanes dx = target.x - x;
  const Lanes dy = target.y - y;
  const Lanes dz = target.z - z;
  return root(dx * dx + dy * dy + dz * dz);
}

// Level by level: `pending` holds the first child of each cell of the level above that was split.
u64 leafCells(const CellCentres& centres, const double* nodes, const SizedPoint& target,
              double minRelDist, std::uint32_t* cells, std::uint32_t* pending) {
  u64 numCells = 0;
  if (centres.maxLevel == 0) {
    cells[numCells++] = 0;
    return numCells;
  }
  std::uint32_t levelBegin = 1;
  u64 numPending = 1;
  pending[0] = 1;
  double cellSize = 0.5 * target.size;
  for (u64 level = 1; level < centres.maxLevel; ++level) {
    const std::uint32_t nextBegin = 4 * levelBegin + 1;
    u64 numSplit = 0;
    std::uint32_t* const split = pending + numPending;
    for (u64 i = 0; i < numPending; i += 2) {
      const std::uint32_t first = pending[i];
      const std::uint32_t second = i + 1 < numPending ? pending[i + 1] : first;
      const Lanes ratio = distanceToSiblings(centres, nodes, target, first, second) / cellSize;
      const unsigned isLeaf = bitsOf(ratio > minRelDist);
      // Every cell is written to both lists and kept in one. Which one is unpredictable, so a
      // branch would cost more.
      const u64 numSiblings = second == first ? 4 : 8;
      for (u64 l = 0; l < numSiblings; ++l) {
        const auto child = static_cast<std::uint32_t>(l % 4);
        const std::uint32_t cell = (l < 4 ? first : second) + child;
        const u64 leaf = isLeaf >> l & 1U;
        cells[numCells] = cell;
        split[numSplit] = nextBegin + 4 * (cell - levelBegin);
        numCells += leaf;
        numSplit += 1 - leaf;
      }
    }
    for (u64 i = 0; i < numSplit; ++i) pending[i] = split[i];
    numPending = numSplit;
    levelBegin = nextBegin;
    cellSize *= 0.5;
  }
  for (u64 i = 0; i < numPending; ++i)
    for (std::uint32_t k = 0; k < 4; ++k) cells[numCells++] = pending[i] + k;
  return numCells;
}

/// The points of lanes [lane, lane + 8) of one cell: differences to the target and charges.
struct CellPoints {
  Lanes dx;
  Lanes dy;
  Lanes dz;
  Lanes forPotential;
  Lanes forGradient;
};

[[gnu::always_inline]] inline Lanes chargeOf(const Density& density, const CellCharges& c,
                                             const double* cell) {
  const double* const shapes = cell + density.firstRow * c.numLanes;
  Lanes charge{};
  for (u64 i = 0; i < density.numShapes; ++i)
    charge += loadLanes(shapes + i * c.numLanes) * density.coefficients[i];
  return charge;
}

[[gnu::always_inline]] inline CellPoints cellPoints(const CellCharges& c, const double* cell,
                                                    const SizedPoint& target) {
  Lanes x{};
  Lanes y{};
  Lanes z{};
  for (u64 k = 0; k < c.numNodes; ++k) {
    const Lanes n = loadLanes(cell + k * c.numLanes);
    x += n * c.nodes[3 * k];
    y += n * c.nodes[3 * k + 1];
    z += n * c.nodes[3 * k + 2];
  }
  const Lanes qp = chargeOf(c.forPotential, c, cell);
  const bool sameDensity = c.forGradient.coefficients == c.forPotential.coefficients &&
                           c.forGradient.firstRow == c.forPotential.firstRow;
  const Lanes qg = sameDensity ? qp : chargeOf(c.forGradient, c, cell);
  return {target.x - x, target.y - y, target.z - z, qp, qg};
}

PotentialAndGradient sumOfCellsPairwise(const CellCharges& c, const SizedPoint& target) {
  PotentialAndGradient sum;
  for (u64 i = 0; i < c.numCells; ++i) {
    const double* const cell = c.table + c.cells[i] * c.numRows * c.numLanes;
    for (u64 lane = 0; lane < c.numPoints; lane += kNumLanes) {
      const CellPoints p = cellPoints(c, cell + lane, target);
      double dx[kNumLanes], dy[kNumLanes], dz[kNumLanes], qp[kNumLanes], qg[kNumLanes];
      storeLanes(dx, p.dx);
      storeLanes(dy, p.dy);
      storeLanes(dz, p.dz);
      storeLanes(qp, p.forPotential);
      storeLanes(qg, p.forGradient);
      for (u64 l = 0; l < kNumLanes && lane + l < c.numPoints; ++l) {
        const double s = 1.0 / __builtin_sqrt(dx[l] * dx[l] + dy[l] * dy[l] + dz[l] * dz[l]);
        const double w = qg[l] * s * (s * s);
        sum.potential += qp[l] * s;
        sum.gradient[0] -= w * dx[l];
        sum.gradient[1] -= w * dy[l];
        sum.gradient[2] -= w * dz[l];
      }
    }
  }
  return sum;
}

PotentialAndGradient sumOfCells(const CellCharges& c, const SizedPoint& target) {
  Sums sums{};
  for (u64 lane = 0; lane < c.numPoints; lane += kNumLanes) {
    const u64 left = c.numPoints - lane;
    const LaneMask used = laneMask(left >= kNumLanes ? 0xffU : (1U << left) - 1U);
    for (u64 i = 0; i < c.numCells; ++i) {
      const CellPoints p =
          cellPoints(c, c.table + c.cells[i] * c.numRows * c.numLanes + lane, target);
      Lanes s = inverseRoot(p.dx * p.dx + p.dy * p.dy + p.dz * p.dz);
      s = whereSet(used, s);
      const Lanes w = (p.forGradient * s) * (s * s);
      sums.potential += p.forPotential * s;
      sums.x += w * p.dx;
      sums.y += w * p.dy;
      sums.z += w * p.dz;
    }
  }
  if (!allFinite(sums)) return sumOfCellsPairwise(c, target);
  return {math::sumOfLanes(sums.potential),
          {-math::sumOfLanes(sums.x), -math::sumOfLanes(sums.y), -math::sumOfLanes(sums.z)}};
}
