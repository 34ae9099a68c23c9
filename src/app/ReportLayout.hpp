#pragma once

/// Lines that set off the blocks of the run's report.
namespace orvanta {

inline constexpr const char* kDoubleRule =
    "#===================================================================\n";
inline constexpr const char* kSingleRule =
    "#-------------------------------------------------------------------\n";

}  // namespace orvanta
