#!/bin/sh
# Which panel the two panel commands become, by what is there.
# usage: panels_test.sh SOURCE_ROOT
set -u
commands=$1/packaging/bin
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT
failures=0

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
    got_status=$?
    case $got in
    $output) [ $got_status = "$status" ] && return ;;
    esac
    echo "$command with ($*): status $got_status, \"$got\"; expected $status, \"$output\"" >&2
    failures=$((failures + 1))
}

unset QD_APANEL QD_VIDEOPANEL
check apanel 3 pavucontrol alsamixer xterm pavucontrol-qt pavucontrol
check apanel 3 pavucontrol-qt pavucontrol-qt alsamixer xterm
check apanel 3 "xterm -e alsamixer" alsamixer xterm
check apanel 3 "x-terminal-emulator -e alsamixer" alsamixer xterm x-terminal-emulator
check apanel 127 "apanel: *pavucontrol*QD_APANEL" alsamixer # without a terminal
check videopanel 3 qv4l2 v4l2-ctl guvcview qv4l2
check videopanel 3 "guvcview --control_panel" v4l2-ctl guvcview
check videopanel 3 "v4l2-ctl --list-ctrls-menus" v4l2-ctl
check videopanel 127 "videopanel: *qv4l2*QD_VIDEOPANEL"
export QD_APANEL="mixer 'two words'" QD_VIDEOPANEL="eyes; exit 5"
check apanel 3 "mixer two words" mixer pavucontrol
check videopanel 5 eyes eyes qv4l2
[ $failures = 0 ]
