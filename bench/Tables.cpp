// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "bench/Tables.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>

namespace Bench {
namespace {

std::optional< double >
medianOf( const RowFigures& row, const std::string& subject ) {
   for ( const SubjectFigures& known : row.subjects ) {
      if ( known.name == subject ) {
         return median( known.figures );
      }
   }
   return std::nullopt;
}

/// Three digits, and all those before the point.
std::string
figureText( double figure ) {
   const int decimals = std::abs( figure ) < 10 ? 2 : std::abs( figure ) < 100 ? 1 : 0;
   char text[ 64 ];
   std::snprintf( text, sizeof text, "%.*f", decimals, figure );
   return text;
}

std::string
ratioText( double ratio ) {
   char text[ 64 ];
   std::snprintf( text, sizeof text, "%.2f", ratio );
   return text;
}

/// The least figure of those that a goal names; none when a filter left one of them out.
std::optional< double >
leastOf( const RowFigures& row, const Goal& goal ) {
   std::optional< double > least;
   for ( const std::string& subject : goal.against ) {
      const std::optional< double > figure = medianOf( row, subject );
      if ( !figure ) {
         return std::nullopt;
      }
      least = std::min( least.value_or( *figure ), *figure );
   }
   return least;
}

/// How the library stands to a goal; none when a filter left out one that it takes.
std::optional< double >
reached( const RowFigures& row, const Goal& goal ) {
   const std::optional< double > library = medianOf( row, kLibrary );
   if ( goal.kind == Goal::Kind::Absolute ) {
      return library;
   }
   const std::optional< double > other = leastOf( row, goal );
   if ( !library || !other ) {
      return std::nullopt;
   }
   return goal.kind == Goal::Kind::Ratio ? *library / *other : *library - *other;
}

std::string
goalTitle( const Goal& goal ) {
   const auto against = [ & ] {
      return goal.against.size() == 1 ? goal.against.front() : std::string( "best peer" );
   };
   switch ( goal.kind ) {
   case Goal::Kind::Ratio:
      return "x " + against();
   case Goal::Kind::Difference:
      return "over " + against();
   case Goal::Kind::Absolute:
      return "held against";
   }
   return "";
}

std::string
goalCell( const RowFigures& row, const Goal& goal ) {
   const std::optional< double > value = reached( row, goal );
   if ( !value ) {
      return "-";
   }
   const auto text = goal.kind == Goal::Kind::Ratio ? ratioText : figureText;
   if ( std::isinf( goal.limit ) ) {
      return text( *value );
   }
   const std::string mark = *value <= goal.limit ? "" : "**";
   return mark + text( *value ) + mark + " (" + text( goal.limit ) + ")";
}

template < class Names >
void
addOnce( Names& names, const std::string& name ) {
   if ( std::ranges::find( names, name ) == names.end() ) {
      names.push_back( name );
   }
}

std::string
tableOf( const std::vector< RowFigures >& rows ) {
   std::vector< std::string > subjects;
   std::vector< std::string > goals;
   for ( const RowFigures& row : rows ) {
      for ( const SubjectFigures& subject : row.subjects ) {
         addOnce( subjects, subject.name );
      }
      for ( const Goal& goal : row.row.goals ) {
         addOnce( goals, goalTitle( goal ) );
      }
   }
   std::ostringstream out;
   out << "### " << rows.front().row.group << "\n\n| workload |";
   for ( const std::string& title : subjects ) {
      out << " " << title << " |";
   }
   for ( const std::string& title : goals ) {
      out << " " << title << " |";
   }
   out << "\n|---|";
   for ( std::size_t i = 0; i < subjects.size() + goals.size(); ++i ) {
      out << "--:|";
   }
   for ( const RowFigures& row : rows ) {
      out << "\n| " << row.row.name << " |";
      for ( const std::string& subject : subjects ) {
         const std::optional< double > figure = medianOf( row, subject );
         out << " " << ( figure ? figureText( *figure ) : "" ) << " |";
      }
      for ( const std::string& title : goals ) {
         const auto goal = std::ranges::find( row.row.goals, title, goalTitle );
         out << " " << ( goal == row.row.goals.end() ? "" : goalCell( row, *goal ) ) << " |";
      }
   }
   out << "\n\n";
   return out.str();
}

/// The rows of each group together, in the order in which groups first come.
std::vector< std::vector< RowFigures > >
grouped( const std::vector< RowFigures >& rows ) {
   std::vector< std::vector< RowFigures > > groups;
   for ( const RowFigures& row : rows ) {
      const auto group = std::ranges::find_if(
         groups, [ & ]( const auto& known ) { return known.front().row.group == row.row.group; } );
      if ( group == groups.end() ) {
         groups.push_back( { row } );
      } else {
         group->push_back( row );
      }
   }
   return groups;
}

}   // namespace

std::string
markdownOf( const std::vector< RowFigures >& rows ) {
   std::string text;
   for ( const auto& group : grouped( rows ) ) {
      text += tableOf( group );
   }
   return text;
}

std::string
jsonOf( const std::vector< RowFigures >& rows ) {
   std::ostringstream out;
   out.precision( 6 );
   const char* rowEnd = "[\n";
   for ( const RowFigures& row : rows ) {
      out << rowEnd << R"( {"group": ")" << row.row.group << R"(", "row": ")" << row.row.name
          << R"(", "medians": {)";
      const char* end = "";
      for ( const SubjectFigures& subject : row.subjects ) {
         out << end << '"' << subject.name << R"(": )" << median( subject.figures );
         end = ", ";
      }
      out << R"(}, "goals": [)";
      end = "";
      for ( const Goal& goal : row.row.goals ) {
         if ( const std::optional< double > value = reached( row, goal ) ) {
            out << end << R"({"what": ")" << goalTitle( goal ) << R"(", "reached": )" << *value;
            if ( !std::isinf( goal.limit ) ) {
               out << R"(, "limit": )" << goal.limit;
            }
            out << "}";
            end = ", ";
         }
      }
      out << "]}";
      rowEnd = ",\n";
   }
   out << "\n]\n";
   return out.str();
}

std::string
chartOf( const std::vector< RowFigures >& rows ) {
   constexpr int kLabels = 300;     // width of the names
   constexpr int kScale = 160;      // pixels of a bar of 1.0
   constexpr double kLongest = 3;   // longer bars are cut and say so
   constexpr int kBar = 11;
   std::ostringstream bars;
   int y = 24;
   for ( const RowFigures& row : rows ) {
      const auto goal = std::ranges::find( row.row.goals, Goal::Kind::Ratio, &Goal::kind );
      const auto base = goal == row.row.goals.end() ? std::nullopt : leastOf( row, *goal );
      if ( !base ) {
         continue;
      }
      bars << "<text x='4' y='" << y << "' font-weight='bold'>" << row.row.name << "</text>\n";
      y += 5;
      for ( const SubjectFigures& subject : row.subjects ) {
         const double ratio = median( subject.figures ) / *base;
         const int length = static_cast< int >( std::min( ratio, kLongest ) * kScale );
         bars << "<text x='" << kLabels - 6 << "' y='" << y + 9 << "' text-anchor='end'>"
              << subject.name << "</text><rect x='" << kLabels << "' y='" << y << "' width='"
              << std::max( length, 1 ) << "' height='" << kBar - 1 << "' fill='"
              << ( subject.name == kLibrary ? "#c0392b" : "#7f8c8d" ) << "'/><text x='"
              << kLabels + length + 5 << "' y='" << y + 9 << "'>" << ratioText( ratio )
              << ( ratio > kLongest ? " &#8594;" : "" ) << "</text>\n";
         y += kBar + 1;
      }
      const double limit = kLabels + std::min( goal->limit, kLongest ) * kScale;
      bars << "<path d='M" << limit << " " << y - static_cast< int >( row.subjects.size() ) * 12
           << "V" << y << "' stroke='#2980b9' stroke-dasharray='3 2'/>\n";
      y += 18;
   }
   std::ostringstream out;
   out << "<svg xmlns='http://www.w3.org/2000/svg' width='860' height='" << y
       << "' font-family='sans-serif' font-size='10'>\n"
       << "<rect width='100%' height='100%' fill='white'/>\n"
       << bars.str() << "</svg>\n";
   return out.str();
}

}   // namespace Bench
