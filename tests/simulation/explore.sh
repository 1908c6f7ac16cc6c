#!/bin/sh
# explore.sh EVENTS SIMULATE: tries all orders of as many events as TAVREL_ALL_ORDERS_OF asks
# for; of EVENTS if it asks for none.

exec "$2" --all-orders-of "${TAVREL_ALL_ORDERS_OF:-$1}"
