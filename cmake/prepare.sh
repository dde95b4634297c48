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
        case $(dpkg-query -W -f '${Status}' "$package" 2>/dev/null) in
            *' installed') ;;
            *) lacks "$package" "$package" ;;
        esac
    done
}
cannot() { # cannot WHY: ends with what is lacking
    echo "$self: needs $lacking; $1" >&2
    exit 1
}
install_missing() {
    [ -z "$missing" ] && return
    command -v apt-get >/dev/null 2>&1 || cannot "there is no apt-get to install that with"
    as_root=
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null 2>&1 || cannot "only root can install that, and there is no sudo"
        as_root=sudo
    fi
    echo "installing:$missing"
    # What apt-get says goes into our line.
    said=$( { $as_root apt-get update -qq &&
        $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $missing; } 2>&1 >/dev/null) ||
        cannot "installing failed: $(printf '%s\n' "$said" | grep '^E: ' | head -1)"
    missing= lacking=
}
