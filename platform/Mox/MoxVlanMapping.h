// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxVlanMappingConfig, MoxVlanMappingStatus: one VLAN mapping as configured, and as in force.
// Plain values with the same fields.
#pragma once

#include <cstdint>

#include "Bridging/VlanXlateMapping.h"
#include "Mox/PortVlanKey.h"

namespace Mox {

/// Fields that configuration and status share. The default has the default key, the empty
/// mapping and all flags false.
class MoxVlanMappingRecord {
 public:
   constexpr MoxVlanMappingRecord() = default;
   constexpr MoxVlanMappingRecord( const PortVlanKey& key, Bridging::VlanXlateMapping mapping,
                                   bool inLag = false, bool xlateUntagged = false,
                                   std::uint8_t origin = 0 )
       : key_( key ),
         mapping_( mapping ),
         inLag_( inLag ),
         xlateUntagged_( xlateUntagged ),
         origin_( origin ) {}

   constexpr const PortVlanKey& key() const { return key_; }
   constexpr Bridging::VlanXlateMapping mapping() const { return mapping_; }
   /// Whether the port is a member of a link aggregate.
   constexpr bool inLag() const { return inLag_; }
   /// Whether untagged frames are translated too.
   constexpr bool xlateUntagged() const { return xlateUntagged_; }
   /// Who wrote the record, in the writer's own numbering.
   constexpr std::uint8_t origin() const { return origin_; }

   constexpr bool operator==( const MoxVlanMappingRecord& ) const = default;

 private:
   PortVlanKey key_;
   Bridging::VlanXlateMapping mapping_;
   bool inLag_ = false;
   bool xlateUntagged_ = false;
   std::uint8_t origin_ = 0;
};

class MoxVlanMappingConfig : public MoxVlanMappingRecord {
 public:
   using MoxVlanMappingRecord::MoxVlanMappingRecord;
   constexpr bool operator==( const MoxVlanMappingConfig& ) const = default;
};

class MoxVlanMappingStatus : public MoxVlanMappingRecord {
 public:
   using MoxVlanMappingRecord::MoxVlanMappingRecord;
   constexpr bool operator==( const MoxVlanMappingStatus& ) const = default;
};

}   // namespace Mox
