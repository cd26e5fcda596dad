// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Export: the one mark of what a shared library shows.
//
// Everything is built with hidden visibility; a class, function or variable that a user of the
// libraries may reach carries ZEL_EXPORT. It means the same when the library is built and when
// it is used, so no header needs to know which of the two is happening. A macro, because an
// attribute cannot be named otherwise.
#pragma once

#define ZEL_EXPORT __attribute__( ( visibility( "default" ) ) )
