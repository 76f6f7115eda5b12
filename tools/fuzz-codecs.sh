#!/bin/sh
# Builds the picture codecs of libavcodec with the fuzzers' instruments, once, from the source
# package of the system's: its parsers are what a member's pictures reach. Where the source cannot
# be had one line says so, and the fuzzers use the system's library.
# usage: fuzz-codecs.sh DIRECTORY JOBS   (pkg-config finds them in DIRECTORY/lib/pkgconfig)
set -u
[ -e "$1/lib/pkgconfig/libavcodec.pc" ] && exit 0
mkdir -p "$1/apt/sources" "$1/apt/lists/partial" "$1/apt/cache/archives/partial"
prefix=$(cd "$1" && pwd)
log=$prefix/log

# The places that the system's packages come from, their sources this time, for ourselves alone.
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -e "$list" ] && sed -n 's/^deb /deb-src /p' "$list" >"$prefix/apt/sources/$(basename "$list" .list).list"
done
for list in /etc/apt/sources.list.d/*.sources; do
    [ -e "$list" ] && sed 's/^Types:.*/Types: deb-src/' "$list" >"$prefix/apt/sources/$(basename "$list")"
done
cat >"$prefix/apt/apt.conf" <<EOF
Dir::Etc::sourcelist "-";
Dir::Etc::sourceparts "$prefix/apt/sources";
Dir::State::lists "$prefix/apt/lists";
Dir::Cache "$prefix/apt/cache";
APT::Sandbox::User "";
EOF

fetch() {
    APT_CONFIG=$prefix/apt/apt.conf
    export APT_CONFIG
    apt-get update && cd "$prefix/apt" && apt-get source ffmpeg
}

build() {
    instruments="-g -fsanitize=address,undefined,fuzzer-no-link"
    for configure in "$prefix"/apt/ffmpeg-*/configure; do :; done
    mkdir -p "$prefix/build" && cd "$prefix/build" \
        && "$configure" --prefix="$prefix" --cc=clang-14 --cxx=clang++-14 \
            --extra-cflags="$instruments" --extra-ldflags="-fsanitize=address,undefined" \
            --enable-pic --disable-shared --enable-static --disable-everything --disable-asm \
            --disable-autodetect --disable-programs --disable-doc --disable-network \
            --disable-avfilter --disable-postproc --disable-swresample \
            --enable-decoder=h261,h263 --enable-encoder=h261,h263 \
        && make -j "$2" install
}

if ! (fetch) >"$log" 2>&1; then
    echo "fuzz: the source of libavcodec cannot be had ($1/log); the system's is used, without instruments" >&2
    rm -rf "$prefix/apt"
elif ! (build "$@") >>"$log" 2>&1; then
    echo "fuzz: libavcodec could not be built ($1/log); the system's is used, without instruments" >&2
else
    rm -rf "$prefix/apt" "$prefix/build"
    rm -f "$prefix/../CMakeCache.txt" # it may name the system's
fi
exit 0
