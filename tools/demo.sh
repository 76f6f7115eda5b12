#!/bin/sh
# A conference on this machine: people who speak, each with two windows and
# everybody's picture.
# With a display: live, until you leave. Without one: on a private one for
# DEMO_SECONDS, and BUILD_DIR/demo then holds screenshot.png and heard/*.wav.
#
# usage: demo.sh BUILD_DIR
#   DEMO_MEMBERS (3)   how many take part, 2 to 8
#   DEMO_SECONDS (15)  how long without a display
#   DEMO_HEADLESS      not empty: without a display even where there is one
#   DEMO_COMMAND       what to run before the end, instead of a screenshot, without
#                      a display
set -u
build=${1:?usage: demo.sh BUILD_DIR}
members=${DEMO_MEMBERS:-3}
seconds=${DEMO_SECONDS:-15}
demo=$build/demo
server="" # directory of the private display

# The window manager has nothing to save and would ask its users first.
clean_up() {
    [ -n "${mwm:-}" ] && kill -KILL "$mwm" 2>/dev/null && wait "$mwm" 2>/dev/null
    [ -n "${xvfb:-}" ] && kill "$xvfb" 2>/dev/null && wait "$xvfb" 2>/dev/null
    [ -n "$server" ] && rm -rf "$server"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# One line a member: name, voice, pitch, what it says.
speak() {
    espeak-ng -v "$2" -p "$3" -s 150 -w "$demo/voices/$1.full" "$4" &&
        sox -t wav "$demo/voices/$1.full" -r 8000 -c 1 -b 16 "$demo/voices/$1.wav" norm -3 &&
        rm "$demo/voices/$1.full"
}

make_voices() {
    speak anna en-gb+f3 60 "Good morning, this is Anna. I can see both of you, and the sound is very clear today." &&
        speak bernt de 35 "Guten Tag, hier spricht Bernt. Ich habe die neuen Zahlen mitgebracht, wir gehen sie gleich durch." &&
        speak chiara it+f4 70 "Buongiorno a tutti, sono Chiara. Dalla mia finestra si vede il mare, e oggi splende il sole." &&
        speak dmitri ru 30 "Dobry den, govorit Dmitri. Seven, eight, nine, ten: I am counting while you listen." &&
        speak elena es+f2 65 "Hola, soy Elena. Hablo un poco deprisa, pero creo que me entienden muy bien." &&
        speak franz de+m5 20 "Servus, da ist der Franz aus Wien. Kann mich jemand hören? Ich höre euch alle." &&
        speak greta sv+f5 55 "Hej, det är Greta. Jag tar anteckningar medan vi pratar med varandra." &&
        speak henri fr-fr 40 "Bonjour, ici Henri. La réunion commence à l'heure, et c'est très agréable."
}

# Starts a server that chooses a free display by itself, and a window manager.
start_display() {
    server=$(mktemp -d) || return 1
    Xvfb -displayfd 3 -screen 0 "${screen}x24" -nolisten tcp \
        3>"$server/number" >"$server/log" 2>&1 &
    xvfb=$!
    tries=100
    until [ -s "$server/number" ]; do
        tries=$((tries - 1))
        if [ $tries = 0 ] || ! kill -0 "$xvfb" 2>/dev/null; then
            echo "Xvfb did not start:" >&2
            cat "$server/log" >&2
            return 1
        fi
        sleep 0.1
    done
    DISPLAY=:$(cat "$server/number")
    export DISPLAY
    unset XAUTHORITY
    display-im6 -window root "xc:#46586a" >/dev/null 2>&1
    mwm -xrm 'Mwm*background: #b8c4ce' -xrm 'Mwm*foreground: #1f2933' \
        -xrm 'Mwm*activeBackground: #2f6f9f' -xrm 'Mwm*activeForeground: white' \
        >"$server/mwm.log" 2>&1 &
    mwm=$!
}

rm -rf "$demo"
mkdir -p "$demo/voices" || exit 1
make_voices || { echo "the voices could not be made" >&2; exit 1; }

if [ -z "${DEMO_HEADLESS:-}" ] && [ -n "${DISPLAY:-}" ] && timeout 5 xdpyinfo >/dev/null 2>&1; then
    screen=$(xdpyinfo | sed -n 's/^ *dimensions: *\([0-9]*x[0-9]*\).*/\1/p' | head -1)
    trap : INT # leaving is no failure; the conference ends by itself
    echo "leave with Ctrl-C, by closing all windows, or by typing: end"
    "$build/quendal-conference" demo --dir "$demo" --members "$members" --seconds 0 \
        --screen "${screen:-1280x1024}"
    exit $?
fi

screen=$((860 + members * 190))x$((members * 380))
start_display || exit 1
"$build/quendal-conference" demo --dir "$demo" --members "$members" --seconds "$seconds" \
    --screen "$screen" --before-end "${DEMO_COMMAND:-import -window root '$demo/screenshot.png'}"
status=$?
[ -n "${DEMO_COMMAND:-}" ] && exit $status
echo
ls "$demo/screenshot.png" "$demo"/heard/*.wav || status=1
exit $status
