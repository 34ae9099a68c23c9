#pragma once

#include "io/StreamBundle.hpp"

/// The log of the program. Library code writes to a channel and doesn't know where the text goes;
/// the application decides by giving the channel its streams.
///
/// Inline objects of a header are built before the static objects of every file that includes it,
/// and destroyed after them, so those may write here, too.
namespace velmo::io {

inline NullStream nullStream;

inline StreamBundle out({}, {});    ///< the run's report
inline StreamBundle info({}, {});   ///< details: file names, parameters
inline StreamBundle debug({}, {});  ///< for the search of faults
inline StreamBundle warn({}, {});   ///< warnings

}  // namespace velmo::io
