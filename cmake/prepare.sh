# SPDX-License-Identifier: MIT
# Sourced by the commands of this tree from its root: installs what they need and what is missing, or says in one line
# what that is, and ends. `need COMMAND-OR-FILE PACKAGE` asks for a Debian package unless the command or file is there,
# `want PACKAGE...` for packages whatever they hold.
self=${0#./}
case $self in /*) self=${self%/*}; self=${self##*/}/${0##*/} ;; esac
missing= lacking=
lacks() { # lacks WHAT PACKAGE
    lacking="${lacking:+$lacking, }$1"
    [ "$1" = "$2" ] || lacking="$lacking (package $2)"
    missing="$missing $2"
}
need() {
    case $1 in
        /*) for f in $1; do [ -e "$f" ] && return; done; lacks "${1##*/}" "$2" ;;
        *) command -v "$1" >/dev/null 2>&1 || lacks "$1" "$2" ;;
    esac
}
want() {
    for package; do
        case $(dpkg-query -W -f '${Status}' "$package" 2>/dev/null) in *' installed') ;; *) lacks "$package" "$package" ;; esac
    done
}
install_missing() {
    [ -z "$missing" ] && return
    command -v apt-get >/dev/null 2>&1 || { echo "$self: needs $lacking; there is no apt-get to install that with" >&2; exit 1; }
    as_root=
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null 2>&1 || { echo "$self: needs $lacking; only root can install that, and there is no sudo" >&2; exit 1; }
        as_root=sudo
    fi
    echo "installing:$missing"
    # What apt-get says goes into our line.
    said=$( { $as_root apt-get update -qq && $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $missing; } 2>&1 >/dev/null) ||
        { echo "$self: needs $lacking; installing failed: $(printf '%s\n' "$said" | grep '^E: ' | head -1)" >&2; exit 1; }
    missing= lacking=
}
