#!/bin/sh
# Makes the clips and photographs that the video benchmark films, as raw QCIF
# or larger planes, out of the example data of a few Debian packages. The
# packages are fetched and unpacked, not installed: no rights are needed.
# usage: bench-clips.sh DIR
set -eu
dir=$1
packages="opencv-doc python3-skimage gnome-user-docs"
[ -e "$dir/complete" ] && exit 0
mkdir -p "$dir/root"
cd "$dir"

echo "fetching $packages for the video benchmark"
for package in $packages; do
    apt-get download "$package" >fetch.log 2>&1 || { apt-get update && apt-get download "$package"; } \
        >fetch.log 2>&1 || { tail -3 fetch.log >&2; echo "no package $package" >&2; exit 1; }
    dpkg-deb --fsys-tarfile "$package"_*.deb | tar -x -C root --wildcards \
        '*/examples/data/*.avi' '*/examples/data/*.jpg' '*/examples/data/*.png' 2>/dev/null ||
    dpkg-deb --fsys-tarfile "$package"_*.deb | tar -x -C root --wildcards \
        '*/skimage/data/*.png' 2>/dev/null ||
    dpkg-deb --fsys-tarfile "$package"_*.deb | tar -x -C root './usr/share/help/C/gnome-help/figures'
    rm "$package"_*.deb
done
cv=root/usr/share/doc/opencv-doc/examples/data
sk=root/usr/lib/python3/dist-packages/skimage/data
help=root/usr/share/help/C/gnome-help/figures

# make NAME INPUT FILTERS [INPUT OPTIONS]: the clip or photograph NAME.
make() {
    name=$1 input=$2 filters=$3
    shift 3
    ffmpeg -v error -nostdin -y "$@" -i "$input" -an -vf "$filters" -sws_flags area -fps_mode passthrough \
        -pix_fmt yuv420p -f rawvideo "$name.yuv"
}
qcif='crop=min(iw\,ih*11/9):min(ih\,iw*9/11),scale=176:144'

make street "$cv/vtest.avi" "$qcif" -t 39.5
make crossing "$cv/vtest.avi" "crop=484:396:200:20,scale=176:144" -ss 40
make dialogue "$cv/Megamind.avi" "$qcif" -t 8.34
make close-up "$cv/Megamind.avi" "select='gte(t,8.4)',$qcif"
make desktop "$help/display-dual-monitors.webm" 'scale=176:132,pad=176:144:0:6'
make portrait "$sk/astronaut.png" 'crop=330:270:60:0,scale=198:162'
make room "$cv/basketball1.png" 'scale=208:156'
make workshop "$sk/motorcycle_left.png" 'scale=264:178'
make lane "$cv/leuvenA.jpg" 'scale=376:282'
make hotel "$cv/building.jpg" 'scale=376:260'
make office "$cv/left01.jpg" 'scale=208:156'
make cat "$sk/chelsea.png" 'scale=264:176'
make page "$sk/page.png" 'scale=384:190'
rm -r root fetch.log
: >complete
