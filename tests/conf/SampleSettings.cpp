#include "conf/SampleSettings.hpp"

#include <stdexcept>

namespace velmo::conf {

std::string sampleSettings() {
  return R"(esProblem:
  domain:
    parts:
      - {name: core, id: 7, regionIds: [70, 71], comment: iron}
      - {name: shell, id: 8}
    placements:
      - {type: scaling, factors: [2, 2.5, 1e-3], center: [1, 0, -1], partIDs: [7]}
      - {type: translation, shifts: [0.1, 0.2, 0.3], partIDs: [7, 8], position: 1, timeId: 3}
      - {type: rotation, axis: [1, 0, 0], center: [0, 4, 0], angle: 30, partIDs: [8]}
      - {type: affine, A: [1, 2, 3, 4, 5, 6, 7, 8, 9], b: [1, 2, 3], partIDs: [], comment: skew}
    comment: two bodies
  dielectrics:
    - {partId: 7, orientations: [1, -1, 0], epsR: 2.2}
  electrodes:
    - {partId: 8, voltage: -1.5e3, comment: high voltage}
  floatings:
    - {partId: 9, charge: 1e-9}
  fem: {order: 1, quadOrder: 4}
  bem:
    quad: {regular: 1, quasiOrder: 2, quasiMaxLevel: 4, quasiAdm: 0.5, singularXi: 6, singularEta: 7}
    fmm: {leafQuadratureOrder: 12, degree: 9}
    tree: {adaptive: false, maxLevel: 4}
    updateInTime: false
  postEval:
    quad: {order: 7, minRelDist: 1.25, maxLevel: 6}
    fmm: {leafQuadratureOrder: 11, degree: 8}
    tree: {adaptive: true, leafSize: 50}
  postProc:
    outBasename: results/run 1
    outputFrequency: 2
    vtk: false
    matOut: {active: true, timeSteps: [1, 5], onException: false}
    vtkhdf: {active: true, isSinglePrec: false, isGZip: true, isSZip: false, isChecksum: true}
    csv: true
    dumpSol: false
    interiorSurfaces: [{id: 3, name: gap}]
  systemSolver: {type: MINRES, rtol: 1e-7, atol: 0.1, maxIter: 20, verbose: true, restart: 10}
  postSolver: {type: CG, rtol: 1e-8, atol: 1e-20, maxIter: 30}
  numThreads: 6
  comment: everything
)";
}

std::string sampleWith(const std::string& from, const std::string& to) {
  std::string text = sampleSettings();
  const auto position = text.find(from);
  if (position == std::string::npos) throw std::logic_error("the sample holds no " + from);
  return text.replace(position, from.size(), to);
}

}  // namespace velmo::conf
