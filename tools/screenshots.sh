#!/bin/sh
# Pictures of all windows, menus and option pages for the README and the guide,
# taken in a demo conference on a private display. A window that this build does
# not have is told of and left out, and its old picture stays.
#
# usage: screenshots.sh BUILD_DIR IMAGE_DIR
set -u
window="" # the one that is driven

# Tries until the command succeeds, for two seconds: the whole conference waits.
wait_until() {
    tries=20
    until "$@" >/dev/null 2>&1; do
        tries=$((tries - 1))
        [ $tries = 0 ] && return 1
        sleep 0.1
    done
}

# The first window to see whose title begins so becomes the one that is driven.
find_window() { window=$(xdotool search --onlyvisible --name "^$1" 2>/dev/null | head -1) && [ -n "$window" ]; }

has_focus() { [ "$(xdotool getwindowfocus)" = "$window" ]; }

take_focus() { xdotool windowraise "$window" windowfocus "$window" && wait_until has_focus; }

# store NAME [CROP]: the screen or a part of it.
store() { import -window root ${2:+-crop "$2" +repage} "$raw/$1.png"; }

# The driven window with its frame.
shoot() {
    frame=$window
    parent=$window
    while [ "$parent" != "$root" ]; do
        frame=$parent
        parent=$(xwininfo -id "$frame" -tree | sed -n 's/^ *Parent window id: \(0x[0-9a-f]*\).*/\1/p')
        [ -n "$parent" ] || return 1
    done
    sleep 0.4 # nothing tells when the last widget has been drawn
    store "$1" "$(xwininfo -id "$frame" | awk '
        /Absolute upper-left X/ { x = $4 } /Absolute upper-left Y/ { y = $4 }
        /^ *Width/ { w = $2 } /^ *Height/ { h = $2 }
        END { printf "%dx%d+%d+%d", w, h, x, y }')"
}

shoot_menus() {
    for menu in file:f edit:e view:v; do
        xdotool keydown alt key "${menu#*:}" keyup alt
        shoot "menu-${menu%:*}" || return 1
        xdotool key Escape
    done
}

shoot_options() {
    xdotool key ctrl+o
    wait_until find_window Options || { xdotool key Return; return 1; }
    take_focus
    for page in general audio video; do
        shoot "options-$page"
        xdotool key Right # the tab has the focus
    done
    xdotool key Escape
}

# Where members are announced nobody calls, so this is somebody who is not.
shoot_call() {
    QD_MIC=silence QD_SPEAKER=null QD_CAMERA=testcard "$build/quendal-conference" run \
        --unannounced --dir "$raw/call" anna </dev/null >/dev/null &
    caller=$!
    wait_until find_window "Quendal: anna" && take_focus && shoot_call_dialog
    done=$?
    kill $caller && wait $caller
    return $done
}

shoot_call_dialog() {
    # The Call button is the right one of three below the list.
    eval "$(xwininfo -id "$window" | sed -n 's/^ *Width: /w=/p; s/^ *Height: /h=/p')"
    xdotool mousemove --window "$window" $((w * 5 / 6)) $((h * 49 / 100)) click 1 mousemove 1 1
    wait_until find_window Call || return 1
    take_focus
    xdotool type --delay 30 chiara.example.org
    shoot call
    xdotool key Escape
}

# All windows of pictures share one count of when to write their figures, and
# with three equal cameras some never get their turn; a pause of one mends that.
pause_cameras() {
    for main in $(xdotool search --onlyvisible --name "^Quendal"); do
        for turn in off on; do
            xdotool mousemove --window "$main" 90 224 click 1
            sleep 0.7
        done
    done
    xdotool mousemove 1 1
}

# Runs while the demo's conference goes on.
shoot_all() {
    pause_cameras
    root=$(xwininfo -root | sed -n 's/.*Window id: \(0x[0-9a-f]*\).*/\1/p')
    wait_until find_window Statistics || return 1
    # The first name in the list, by keyboard: its figures are what the window is for.
    take_focus
    eval "$(xwininfo -id "$window" | sed -n 's/^ *Width: /w=/p')"
    xdotool mousemove --window "$window" $((w / 6)) 55 click 1 mousemove 1 1
    shoot statistics
    store conference
    find_window anna@ && shoot video
    main=$(xdotool search --onlyvisible --name "^Quendal" | head -1)
    window=$main
    take_focus && shoot main && shoot_menus || return 1
    shoot_options || echo "no options window in this build"
    shoot_call || echo "no call window in this build"
}

if [ "$1" = --here ]; then
    raw=$2
    build=$3
    shoot_all
    exit
fi
mkdir -p "$2" || exit 1
raw=$(mktemp -d) || exit 1
trap 'rm -rf "$raw"' EXIT
DEMO_HEADLESS=1 DEMO_SECONDS=8 DEMO_COMMAND="'$0' --here '$raw' '$1'" "$(dirname "$0")/demo.sh" "$1" || exit 1
for picture in "$raw"/*.png; do # few colours make small files
    convert "$picture" -strip -dither None -colors 200 -define png:compression-level=9 \
        "PNG8:$2/${picture##*/}" && echo "$2/${picture##*/}"
done
