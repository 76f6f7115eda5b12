#!/bin/sh
# Which panel the two panel commands become, by what is there.
# usage: panels_test.sh SOURCE_ROOT
set -u
commands=$1/packaging/bin
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT

# check COMMAND EXPECTED_STATUS EXPECTED_OUTPUT [PROGRAM_THAT_IS_THERE...]
# Programs print their name and arguments; a terminal does, too.
check() {
    command=$1 status=$2 output=$3
    shift 3
    rm -rf "$dir/bin" && mkdir "$dir/bin" && ln -s /bin/sh "$dir/bin/sh"
    for program; do
        printf '#!/bin/sh\necho "${0##*/}${*:+ $*}"\nexit 3\n' >"$dir/bin/$program"
        chmod +x "$dir/bin/$program"
    done
    got=$(PATH=$dir/bin "$commands/$command" 2>&1)
    got="$? $got"
    case $got in
    "$status "$output) return ;;
    esac
    echo "$command with ($*): $got; expected $status $output" >&2
    exit 1
}

unset QD_APANEL QD_VIDEOPANEL
check apanel 3 pavucontrol alsamixer xterm pavucontrol
check apanel 3 "xterm -e alsamixer" alsamixer xterm
check apanel 127 "apanel: *pavucontrol*QD_APANEL" alsamixer # without a terminal
check videopanel 3 "guvcview --control_panel" v4l2-ctl guvcview
check videopanel 127 "videopanel: *qv4l2*QD_VIDEOPANEL"
export QD_APANEL="mixer 'two words'"
check apanel 3 "mixer two words" mixer pavucontrol
