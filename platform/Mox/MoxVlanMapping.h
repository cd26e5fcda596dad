// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxVlanMappingConfig, MoxVlanMappingStatus: one VLAN mapping as configured, and as in force.
// Plain values with the same fields. Their string form is
// "Value('Mox::MoxVlanMappingConfig', ** {'key': ..., 'mapping': ..., 'inLag': false,
// 'xlateUntagged': false, 'origin': 0})", in one line.
#pragma once

#include <cstdint>

#include "Bridging/VlanXlateMapping.h"
#include "Mox/PortVlanKey.h"
#include "Zel/Export.h"
#include "Zel/String.h"

namespace Mox {

/// Fields that configuration and status share. The default has the default key, the empty
/// mapping and all flags false.
class ZEL_EXPORT MoxVlanMappingRecord {
 public:
   static constexpr char zelTypeName[] = "Mox::MoxVlanMappingRecord";

   constexpr MoxVlanMappingRecord() = default;
   constexpr MoxVlanMappingRecord( const PortVlanKey& key, Bridging::VlanXlateMapping mapping,
                                   bool inLag = false, bool xlateUntagged = false,
                                   std::uint8_t origin = 0 )
       : key_( key ),
         mapping_( mapping ),
         inLag_( inLag ),
         xlateUntagged_( xlateUntagged ),
         origin_( origin ) {}
   /// Parses the string form; the numbers are taken unchecked.
   MoxVlanMappingRecord( Zel::StringIterator& current, Zel::StringIterator end )
       : MoxVlanMappingRecord( current, end, zelTypeName ) {}

   constexpr const PortVlanKey& key() const { return key_; }
   constexpr Bridging::VlanXlateMapping mapping() const { return mapping_; }
   /// Whether the port is a member of a link aggregate.
   constexpr bool inLag() const { return inLag_; }
   /// Whether untagged frames are translated too.
   constexpr bool xlateUntagged() const { return xlateUntagged_; }
   /// Who wrote the record, in the writer's own numbering.
   constexpr std::uint8_t origin() const { return origin_; }

   constexpr bool operator==( const MoxVlanMappingRecord& ) const = default;
   std::uint32_t hash( std::uint32_t seed ) const;

 protected:
   MoxVlanMappingRecord( Zel::StringIterator& current, Zel::StringIterator end,
                         const char* typeName );
   Zel::String strep( const char* typeName ) const;

 private:
   ZEL_EXPORT friend Zel::String valueToStrep( const MoxVlanMappingRecord& record );

   PortVlanKey key_;
   Bridging::VlanXlateMapping mapping_;
   bool inLag_ : 1 = false;
   bool xlateUntagged_ : 1 = false;
   std::uint8_t origin_ = 0;
};

class ZEL_EXPORT MoxVlanMappingConfig : public MoxVlanMappingRecord {
 public:
   static constexpr char zelTypeName[] = "Mox::MoxVlanMappingConfig";

   using MoxVlanMappingRecord::MoxVlanMappingRecord;
   MoxVlanMappingConfig( Zel::StringIterator& current, Zel::StringIterator end )
       : MoxVlanMappingRecord( current, end, zelTypeName ) {}
   constexpr bool operator==( const MoxVlanMappingConfig& ) const = default;
   ZEL_EXPORT friend Zel::String valueToStrep( const MoxVlanMappingConfig& config );
};

class ZEL_EXPORT MoxVlanMappingStatus : public MoxVlanMappingRecord {
 public:
   static constexpr char zelTypeName[] = "Mox::MoxVlanMappingStatus";

   using MoxVlanMappingRecord::MoxVlanMappingRecord;
   MoxVlanMappingStatus( Zel::StringIterator& current, Zel::StringIterator end )
       : MoxVlanMappingRecord( current, end, zelTypeName ) {}
   constexpr bool operator==( const MoxVlanMappingStatus& ) const = default;
   ZEL_EXPORT friend Zel::String valueToStrep( const MoxVlanMappingStatus& status );
};

}   // namespace Mox
