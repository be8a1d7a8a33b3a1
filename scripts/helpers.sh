# shellcheck shell=bash
# What the scripts share; sourced, not run.

say() { printf '\n== %s\n' "$*"; }

# Runs a command that may take long and says nothing: its output appears only when it fails, and a line every now and
# then tells that it is still at it. Usage: patiently WHAT COMMAND...
patiently() {
    local what=$1 log ticker status=0
    shift
    log=$(mktemp)
    (
        started=$SECONDS
        # Ends by itself when the script is interrupted; the pause must not hold on to the script's output.
        while sleep "${QX_TICK_SECONDS:-10}" >/dev/null 2>&1 && kill -0 $$ 2>/dev/null; do
            printf '   %s: %d s so far, still at it\n' "$what" $((SECONDS - started))
        done
    ) &
    ticker=$!
    "$@" >"$log" 2>&1 || status=$?
    kill "$ticker" 2>/dev/null || true
    wait "$ticker" 2>/dev/null || true
    [ "$status" = 0 ] || tail -n 60 "$log" >&2
    rm -f "$log"
    return "$status"
}

# A folder that the user named relative to where the script was started must still be found from elsewhere.
absolute_sample_data() {
    case ${QX_SAMPLE_DATA:-/} in
    /*) ;;
    *) export QX_SAMPLE_DATA=$PWD/$QX_SAMPLE_DATA ;;
    esac
}

# What root builds in another's folder, the other can no longer change.
note_foreign_folder() {
    local owner
    owner=$(stat -c %U .)
    if [ "$(id -u)" = 0 ] && [ "$owner" != root ] && [ "$owner" != UNKNOWN ]; then
        echo "You are root and this folder belongs to $owner: build/ will belong to root (su $owner -c $0 avoids that)"
    fi
}

# The C and C++ sources, also where there is no git: out of a tarball, or as root in another's clone.
list_sources() {
    local found
    found=$(git ls-files '*.cpp' '*.h' '*.hpp' '*.c' 2>/dev/null) || found=
    [ -n "$found" ] || found=$(find . \( -name build -o -name demo-output -o -name .git \) -prune -o -type f \
        \( -name '*.cpp' -o -name '*.h' -o -name '*.hpp' -o -name '*.c' \) -print)
    printf '%s\n' "$found"
}
