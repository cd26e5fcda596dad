// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Report: rows of figures, what each is held against, and their table.
//
// A row is one workload; its subjects are the library and its peers. A figure of a subject comes
// from one benchmark, repeated in random turns with all others of the program; the table shows
// the medians. Other programs of the machine disturb all subjects alike, so only ratios within
// one run mean anything.
//
// Program  Report.cpp has the main(): it registers the rows, runs them and prints the tables.
//          Options: --tiny, --json=FILE, --chart=FILE, and those of the benchmark library.
// Threads  One.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace Bench {

/// The subject that all goals speak of.
inline constexpr const char* kLibrary = "library";

struct Goal {
   enum class Kind { Ratio, Difference, Absolute };
   Kind kind;
   /// Other subjects of the row, of which the least figure counts; none for an absolute one.
   std::vector< std::string > against;
   double limit;   ///< the largest that is good enough
};

/// The library's figure divided by that of `against`.
inline Goal
ratioTo( const std::string& against, double limit ) {
   return { Goal::Kind::Ratio, { against }, limit };
}
/// The library's figure divided by the least of several: below that of each of them.
inline Goal
belowBest( const std::vector< std::string >& peers ) {
   return { Goal::Kind::Ratio, peers, 1.00 };
}
/// The library's figure divided by that of `against` without a limit: shown, and good as it is.
inline Goal
shownBeside( const std::string& against ) {
   return ratioTo( against, std::numeric_limits< double >::infinity() );
}
/// The library's figure minus that of `against`.
inline Goal
over( const std::string& against, double limit ) {
   return { Goal::Kind::Difference, { against }, limit };
}
/// The library's figure itself.
inline Goal
atMost( double limit ) {
   return { Goal::Kind::Absolute, {}, limit };
}

struct Row {
   std::string group;   ///< the table that it stands in, with the unit: "Size sort, ns per sort"
   std::string name;
   std::vector< Goal > goals;
};

/// Yields one figure each time it is called, having run the state's loop.
using Measurement = std::function< double( benchmark::State& ) >;

/// Registers the figure of one subject of a row. Rows and subjects appear in the order of their
/// first registration. `repetitions` may be fewer than usual for what takes long.
void measure( const Row& row, const std::string& subject, const Measurement& measurement,
              int repetitions = 0 );

/// A figure that does not change from one run to the next, such as bytes: measured once.
void measureOnce( const Row& row, const std::string& subject,
                  const std::function< double() >& measurement );

/// Whether this is a run at a tiny size, which only proves that everything works.
bool tinyRun();

/// Registers the program's rows; each program has one of its own.
void addRows();

double median( std::vector< double > figures );

/// Nanoseconds per operation: the median over the state's passes. `prepare`, untimed, returns the
/// pass; the pass, timed, returns how many operations it did, and goes away untimed.
template < class Prepare >
double
nanosecondsPerOperation( benchmark::State& state, const Prepare& prepare ) {
   std::vector< double > figures;
   for ( [[maybe_unused]] auto _ : state ) {
      const auto begin = std::chrono::steady_clock::now();
      auto pass = prepare();
      const auto start = std::chrono::steady_clock::now();
      const std::size_t operations = pass();
      const auto end = std::chrono::steady_clock::now();
      const std::chrono::duration< double, std::nano > took = end - start;
      figures.push_back( took.count() / static_cast< double >( operations ) );
      // With the preparation, so that the library's least time bounds what the user waits for.
      state.SetIterationTime( std::chrono::duration< double >( end - begin ).count() );
   }
   return median( figures );
}

}   // namespace Bench
