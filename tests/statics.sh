#!/bin/sh
# SPDX-License-Identifier: MIT
# Whether a function's static of the library given runs code to be made: the child of a fork might wait for it for ever.
set -eu
symbols=$(nm -D --undefined-only "$1")
! echo "$symbols" | grep -E '__cxa_guard_acquire|__once_proxy'
