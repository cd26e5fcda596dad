# shellcheck shell=bash
# Copyright 2026 The MoxVlanRangeMapping Authors
# SPDX-License-Identifier: Apache-2.0

# Read by the scripts beside it: enters the repository's root; stages of a build that take
# one line each when they succeed and show everything when they fail. All of it goes to
# standard error, so that standard output belongs to the program that is run.

cd "$( dirname "${BASH_SOURCE[ 0 ]}" )/.." || exit

# stage TEXT COMMAND...
stage() {
   local text=$1 log start=$SECONDS
   shift
   mkdir -p build
   log=$( mktemp build/log.XXXXXX )
   if "$@" </dev/null >"$log" 2>&1; then
      echo "$text ($(( SECONDS - start )) s)" >&2
      rm -f "$log"
   else
      echo "$text: FAILED: $*" >&2
      cat "$log" >&2
      rm -f "$log"
      return 1
   fi
}

# requirePresets PRESET...: ends the script unless CMakePresets.json has tests of each.
requirePresets() {
   local preset known
   known=$( sed -n '/"testPresets"/,/^   ]/s/.*"configurePreset": "\([^"]*\)".*/\1/p' \
      CMakePresets.json | tr '\n' ' ' )
   for preset in "$@"; do
      if [[ " $known" != *" $preset "* ]]; then
         echo "${0##*/}: no preset \"$preset\" with tests; there are $known" >&2
         exit 2
      fi
   done
}

# configureAndBuild PRESET [TARGET...]
configureAndBuild() {
   local preset=$1
   shift
   local command=( cmake --build --preset "$preset" -j "$( nproc )" )
   [ $# -eq 0 ] || command+=( --target "$@" )
   stage "$preset: configured" cmake --preset "$preset"
   if [ -t 2 ]; then
      "${command[@]}" >&2   # ninja keeps to one line of a terminal
   else
      stage "$preset: built" "${command[@]}" -- --quiet
   fi
}
