# SPDX-License-Identifier: MIT
# Sourced by ./demo and ./check: installs what is missing. `need COMMAND-OR-FILE PACKAGE...` asks for
# Debian packages unless the command or file is there.
missing=
need() {
    case $1 in
        /*) for f in $1; do [ -e "$f" ] && return; done ;;
        *) command -v "$1" >/dev/null 2>&1 && return ;;
    esac
    shift
    missing="$missing $*"
}
install_missing() {
    [ -z "$missing" ] && return
    sudo=
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null 2>&1 || { echo "$0: these packages are missing and only root can install them:$missing" >&2; exit 1; }
        sudo=sudo
    fi
    command -v apt-get >/dev/null 2>&1 || { echo "$0: needs apt-get to install:$missing" >&2; exit 1; }
    echo "installing:$missing"
    $sudo apt-get update -qq && $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $missing >/dev/null ||
        { echo "$0: could not install:$missing" >&2; exit 1; }
    missing=
}
