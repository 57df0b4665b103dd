#!/usr/bin/env bash
# tessel-tree against plain runs: tree_test.sh TESSEL TESSEL-TREE PICTURE
set -euo pipefail

tessel=$(realpath "$1") tree=$(realpath "$2") picture=$(realpath "$3")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work" && mkdir "$work/bin"
cp "$tessel" "$work/bin"
PATH=$work/bin:$PATH
cd "$work"

fail() { printf '%s\n' "tree_test: $*" >&2 && exit 1; }

# add FOLDER NAME...: pictures, of a time that is the same in every copy.
add() {
    local name
    mkdir -p -- "$1"
    for name in "${@:2}"; do cp -- "$picture" "$1/$name" && touch -d @1700000000 -- "$1/$name"; done
}

# expect_plain CASE WORDS: the tree is what plain runs make of it, and the words are said.
expect_plain() {
    diff -r plain tree >differences || fail "$1:" "$(head differences said)"
    [[ $(<said) == *"$2"* ]] || fail "$1: $(<said)"
}

# start_with FOLDER: what plain runs make of it goes to "plain", a copy to "tree".
start_with() {
    rm -rf plain tree && cp -a "$1" plain && cp -a "$1" tree
    find plain -name tessel -prune -o -iname '*.jpg' -printf '%h\0' | sort -zu | xargs -0n1 tessel &>/dev/null
    tessel plain/emptied
}

# run OPTION...: tessel-tree over the tree, as a service has it; its status and what it says stay.
run() { status=0 && env -u HOME -u SHELL "$tree" "$@" tree >said 2>&1 || status=$?; }

add start/plain b.JPG a.jpg 'q'\''".jpg'
add start/-dash -x.jpg
add $'start/line\nfeed' $'n\nl.jpg'
add $'start/x\xff y' $'\xff.jpg'
add 'start/a  b/#?%41&' t.jpg
add start/tessel-not/tessel hidden.jpg
add start/emptied/tessel gone.jpg
printf 'gone.jpg\t5\n' >start/emptied/tessel/tesselbase.txt
add start/large $'t\tab.jpg' $'it\'s $x \\ "q.jpg' linked.jpg cut.jpg bad.jpg
for i in {1..102}; do add start/large "$i.jpg"; done
ln -sf ../plain/a.jpg start/large/linked.jpg
head -c 100 "$picture" >start/large/cut.jpg
echo text >start/large/bad.jpg
ln -s ../plain start/large/elsewhere
touch -d @1700000000 start/large/*

start_with start
run -j4 --log log
expect_plain new '7 galleries, 114 pictures, 112 thumbnails made'
grep -qF 'tree/large/bad.jpg: Not a JPEG file: starts with 0x74 0x65' said || fail "$(<said)"
[[ $status == 0 && $(grep -ac '^Reading ' log) == 114 ]] || fail "log: $(grep -ac '^Reading ' log)"
run
expect_plain again 'pictures, 2 thumbnails made' # of names that no database holds
[[ $(grep -c . said) == 4 ]] || fail "$(<said)"
# Damaged since: the old thumbnail stays, and the picture is named. Where nothing can be written,
# nothing was made.
head -c -20 "$picture" >tree/plain/a.jpg
rm -r tree/-dash/tessel && mkdir tree/-dash/tessel/ tree/-dash/tessel/{-x.jpg,tesselbase.txt}
run
[[ $(sed 's,[^ ]*/tree/,,' said) == '7 galleries, 114 pictures, 4 thumbnails made
Without a thumbnail, or damaged:
  large/bad.jpg
  large/cut.jpg
  large/linked.jpg: Premature end of JPEG file
  plain/a.jpg: Premature end of JPEG file
  -dash/-x.jpg
Not finished:
  -dash' && $status == 1 ]] || fail "$status: $(<said)"

# Changed, removed and new pictures, on two machines that a stand-in for ssh reaches.
mv tree before
touch -d @1700000001 before/large/{1..9}{0..9}.jpg
rm before/plain/b.JPG before/large/?.jpg
add before/large new{1..50}.jpg
# Thumbnails that make way, one of them linked to a file of somebody's.
ln -f before/large/bad.jpg before/large/tessel/20.jpg
rm before/large/tessel/21.jpg && mkfifo before/large/tessel/21.jpg
ln -sf ../bad.jpg before/large/tessel/22.jpg
start_with before
# shellcheck disable=SC2016  # the other shell's
printf '#!/bin/sh\nwhile [ "${1#-}" != "$1" ]; do shift; done; shift; [ "$1" != -- ] || shift; exec sh -c "$*"\n' >bin/ssh
chmod +x bin/ssh
run -j1 -S one,two
expect_plain 'two machines' '7 galleries, 154 pictures, 142 thumbnails made'

# Killed at any moment, with all that it has started, it goes on where it was.
rm -rf tree && cp -a before tree
start=$(date +%s%N) && run
took=$((($(date +%s%N) - start) / 1000000))
for eighth in {1..7}; do
    rm -rf tree && cp -a before tree
    setsid "$tree" tree &>/dev/null &
    printf -v delay '%d.%03d' $((took * eighth / 8000)) $((took * eighth / 8 % 1000))
    sleep "$delay"
    # What was started while processes were listed is killed next.
    while mapfile -t pids < <(ps -o pid= -o stat= -s $! | awk '$2 !~ /Z/ { print $1 }') && ((${#pids[@]})); do
        kill -KILL "${pids[@]}" || true
    done &>/dev/null
    wait $! &>/dev/null || true
    run
    expect_plain "killed after $delay s" '7 galleries'
done
rm -rf tree && cp -a before tree
"$tree" tree &>/dev/null &
run
wait
expect_plain 'two at once' '7 galleries'

# Somebody else's files stay theirs, where there is somebody else to be.
other=(setpriv --reuid=65534 --regid=65534 --clear-groups)
cp "$tree" bin/tessel-tree && rm -rf tree && cp -a before tree
if [[ $EUID == 0 ]] && "${other[@]}" bin/tessel >/dev/null; then
    chown -R 65534:65534 tree
    shared=(tree/galleries.html tree/large/bad.jpg tree/large/tessel/{tesselbase,23,24}.*)
    touch tree/galleries.html && chmod 666 "${shared[@]}" && chown 0:0 "${shared[@]}"
    env -u HOME "${other[@]}" bin/tessel-tree --page tree &>said || true # -dash stays as it is
    [[ $(stat -c '%a %u %g' "${shared[@]}" | sort -u) == '666 0 0' ]] || fail "$(stat -c '%n %a %u' "${shared[@]}")"
    [[ -s tree/galleries.html ]] || fail 'no page'
    rm tree/galleries.html
    expect_plain "somebody else's" '7 galleries'
else
    echo 'tree_test: left out: files of somebody else'
fi
rm bin/tessel-tree && chown -R "$EUID" tree && run

# The page of galleries, and what is left when pictures are gone. Nothing goes through a link, and
# files keep their modes.
touch tree/galleries.html && chmod 604 tree/galleries.html tree/plain/tessel/tesselbase.txt
add outside kept.jpg && add tree/plain/album x.jpg && ln -s "$work/outside" tree/plain/album/tessel
run --prune
[[ -s outside/kept.jpg ]] || fail 'pruned through a link'
rm -r tree/plain/album
run --prune --page
[[ $(stat -c %a tree/galleries.html tree/plain/tessel/tesselbase.txt) == $'604\n604' ]] || fail 'a mode'
[[ $(ls tree/emptied/tessel) == tesselbase.txt && ! -s tree/emptied/tessel/tesselbase.txt ]] || fail prune
[[ ! -e tree/plain/tessel/b.JPG && $(cut -f1 tree/plain/tessel/tesselbase.txt) == $'a.jpg\nq\'".jpg' ]] || fail prune
[[ $(LC_ALL=C sed -n 's/^<tr>$/-/p; /size=2>/{ s/.*size=2>//; s/<.font.*//; p }' tree/galleries.html) == '-
a  b/#?%41&#38;: 1
emptied: 0
large: 148
line
plain: 2
-
x'*' y: 1
-dash: 1' ]] || fail "$(<tree/galleries.html)"
grep -qF '"large/tessel/10.jpg"' tree/galleries.html || fail 'the first thumbnail'
grep -qF '<a href="a%20%20b/%23%3F%2541%26/index.html"><img src="a%20%20b/%23%3F%2541%26/tessel/t.jpg">' \
    tree/galleries.html || fail "$(<tree/galleries.html)"

# The folders named themselves, links too, and a size.
cp -a start/plain one && cp -a start/plain two && ln -s one link && "$tree" -tsize 9 --page link two &>said
[[ -s link/galleries.html && -s two/galleries.html && $(<said) == '2 galleries, 6 pictures, 6 '* ]] || fail "$(<said)"
rm -rf tree && cp -a start tree && run -tsize 9
for name in two/tessel/a.jpg tree/large/tessel/1.jpg; do
    [[ $(djpeg "$name" | sed -n 2p) == '9 5' ]] || fail "-tsize: $name"
done

# A locked folder is waited for.
rm tree/plain/index.html && exec 7<tree/plain && flock 7
run 7<&- &
sleep 1
[[ ! -e tree/plain/index.html ]] || fail 'a locked folder'
exec 7<&-
wait
[[ -e tree/plain/index.html ]] || fail 'a folder that was locked'

# Status and words of what goes wrong.
mkdir -p empty/galleries.html
[[ $("$tree" --version) == 'tessel-tree '[0-9]* && $("$tree" --help) == Usage:* ]] || fail 'help or version'
for words in '1 missing' '0 empty' '1 --log missing/log tree' '2 -j 0 tree' '1 -- -x' '2 -x tree' '2' '1 --page empty' '0 --help' '0 --version'; do
    read -ra arguments <<<"${words:1}"
    status=0 && "$tree" "${arguments[@]}" &>said || status=$?
    [[ $status == "${words%% *}" ]] || fail "$words: $status $(<said)"
done
mkdir lost && echo text >lost/$'a\nb.jpg' && "$tree" lost >said 2>&1
[[ $(tail -n 1 said) == */'lost/a?b.jpg' ]] || fail "$(<said)"
bash -x "$tree" -j 3 empty &>said
grep -q -- '-N 1 -j 3 ' said || fail "$(<said)"
ln -s "$(type -P false)" bin/parallel && cp "$tree" bin/tessel-tree
status=0 && bin/tessel-tree empty &>said || status=$?
[[ $status == 1 && $(<said) == *'GNU parallel is missing'* ]] || fail "without parallel: $status $(<said)"
rm bin/parallel bin/tessel-tree
rm -rf tree && cp -a start tree
(ulimit -f 1 && trap '' XFSZ && run && [[ $status == 1 ]]) || fail 'a full disk'
