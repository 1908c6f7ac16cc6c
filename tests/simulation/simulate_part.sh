#!/bin/sh
# simulate_part.sh PERCENT HOURS COMMAND…: runs a simulation for this part of the hours that
# TAVREL_SIMULATED_HOURS asks for; of HOURS if it asks for none.

hours=$((${TAVREL_SIMULATED_HOURS:-$2} * $1 / 100))
shift 2
exec "$@" --hours "$hours"
