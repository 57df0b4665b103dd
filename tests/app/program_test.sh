#!/usr/bin/env bash
# The program as people meet it: what its command line asks for, what a run makes again, and folders of
# anything, in which every run ends normally, every good picture gets its thumbnail, and nothing but
# page, thumbnails and database changes. program_test.sh VERSION [EMULATOR...] TESSEL
# shellcheck disable=SC2016,SC2053  # words for another shell, and patterns
set -Eeuo pipefail
export LC_ALL=C

version=$1; shift
work=$(mktemp -d) base=tessel/tesselbase.txt end=$'</table>\n</body></html>'
trap 'chmod -R u+rwx "$work" && rm -rf "$work"' EXIT
trap '[[ $BASHPID -ne $$ ]] || echo "program_test, line $LINENO: $BASH_COMMAND: $(head -c 900 "$work/said" | tr -c "[:print:]\n" "?")"' ERR
chmod 755 "$work"; mkdir "$work/bin"; cp "${@: -1}" "$work/bin/program"
program=("${@:1:$#-1}" "$work/bin/program")
{ echo '#!/bin/sh'; printf '%s ' exec "${program[@]}" '"$@"'; } >"$work/bin/tessel"
chmod 755 "$work/bin/tessel"; PATH=$work/bin:$PATH

# under WORDS ARGUMENT...: the program behind a shell's words, killed when it takes too long. What it
# says stays.
under() { timeout -s KILL 300 bash -c "$1"' exec "$@"' bash "${program[@]}" "${@:2}" >"$work/said" 2>&1; }
# may WORDS: true where a run behind these words goes through; otherwise says what is left out.
may() { under "$1" . || { echo "program_test: left out: $1"; false; }; }
run() { under '' "${@:-.}"; }
said() { [[ $(<"$work/said") == $1 ]]; }
has_thumbs() { for name; do cmp -- "$work/thumb" "tessel/$name"; done; }
grey() { { printf 'P5 %d %d 255\n' "$1" "$2"; head -c $(($1 * $2)) < <(yes); } | cjpeg "${@:3}"; }
state() { (cd "$work"; find gallery elsewhere -printf '%p %y %m %U %l ' -type f -exec md5sum {} \; -o -print | sort); }
# gallery NAME...: a gallery of good pictures, not made yet.
gallery() {
    cd "$work"; chmod -R u+rwx .; rm -rf gallery elsewhere
    mkdir -p elsewhere gallery/tessel; cd gallery; for name; do cp "$work/picture" "./$name"; done
}

grey 1200 800 >"$work/picture"; : >"$work/said"
gallery x.jpg; run; cp tessel/x.jpg "$work/thumb"

# A gallery of nothing is a gallery.
gallery; rmdir tessel; under 'umask 027;' .; said ''
[[ ! -s $base && $(stat -c %A $base index.html tessel | xargs) == '-rw-r----- -rw-r----- drwxr-x---' ]]
[[ $(<index.html) == $'<html><body>\n\n<center>\n<h2>.</h2>\n<table>\n'"$end" ]]

# Size and folder come from the command line.
for words in '. missing' '. -tsize' '-tsize 100'; do
    read -ra words <<<"$words"; gallery x.jpg; run "${words[@]}"; said ''; [[ ! -e index.html ]]
done
while read -ra words; do
    rm -rf tessel; run "${words[@]:1}"
    [[ $(head -n 2 < <(djpeg tessel/x.jpg)) == $'P6\n'"${words[0]} $((words[0] * 2 / 3))" ]]
    path=${words[-1]}/; [[ $(sed -n 4p index.html) == "<h2>${words[-1]##*/}</h2>" ]]
    said "Reading ${path}x.jpg
${path}x.jpg Width=1200 Height=800 mBits=8 Data != NULL
sizeof(Tpixel)=1
Writing ${path}tessel/x.jpg"
done <<'END'
192 elsewhere .
99 -tsize 99 ./
98 -tsize 98px ./.
192 -TSIZE 80 .
192 -tsizes 80 .
192 -tsize big .
192 -tsize 0 .
192 -tsize -5 .
50 -tsize -tsize 50 .
64 -tsize 9 -tsize 64 .
END
mkdir 70; cp x.jpg 70; run -tsize 70; [[ $(head -n 2 < <(djpeg 70/tessel/x.jpg)) == $'P6\n70 46' ]]
{ printf 'P6 8 8 255\n'; head -c 192 /dev/zero; } | cjpeg >x.jpg # no memory for it
rm $base; run -tsize 2147483647 .; said $'Reading ./x.jpg\n./x.jpg Width=8 Height=8 mBits=24 Data != NULL'

# Each line is written in one piece, whatever it holds and however long it is.
gallery; { printf 'P6 300 200 255\n'; head -c 180000 < <(yes); } | cjpeg | head -c -1 >$'line\nfeed.jpg'
python3 - "$version" <<'END'
import os, socket, subprocess, sys
usage = ["tessel <options> <foldername>\n", "       options: -tsize <thumbsize>\n",
         f"       Version {sys.argv[1]}\n"]
for folder in None, ".", "." + "/." * 2030:
    path = f"{folder}/line\nfeed.jpg"
    made = [f"Reading {path}\n", "Premature end of JPEG file\n",
            f"{path} Width=300 Height=200 mBits=24 Data != NULL\n", "ScaleFakt=2.44141\n",
            "sizeof(Tpixel)=3\n", f"Writing {folder}/tessel/line\nfeed.jpg\n"]
    ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)  # keeps pieces apart
    with theirs:
        subprocess.run(["tessel", folder][:2 if folder else 1], stdout=theirs, stderr=theirs)
    pieces = [piece.decode() for piece in iter(lambda: ours.recv(9999), b"")]
    assert pieces == (made if folder else usage), pieces
    if folder:
        os.remove("tessel/tesselbase.txt")
END

# What is new or later is made again, and nothing else.
gallery a.jpg b.jpg; touch -d @1000000 a.jpg; touch -d @-200000 b.jpg; run
for time in -100000 1000000 1000001 8589934592; do
    touch -d @$time b.jpg; run; said $'Reading ./b.jpg\n*'; [[ $(grep -c Reading "$work/said") == 1 ]]
    run; said ''
done
touch -d @5 a.jpg; rm b.jpg; run; said '' # a long's largest value, where a time doesn't fit
[[ $(<$base) == $'a.jpg\t1000000\nb.jpg\t'@(8589934592|2147483647) ]]
rm $base; run; has_thumbs a.jpg; said $'Reading ./a.jpg\n*'
# Whatever names have in common, and whatever records stand between theirs.
names=(tog together 'together 1' 'together 1.jpg' 'together 12345678' 'together 123456789' $'tog\xff' $'tog\x7f')
names+=("together 1234"{a..j})
gallery "${names[@]/%/.jpg}"; touch -d @5 ./*.jpg; run; has_thumbs "${names[@]/%/.jpg}"
printf '%s\t9\n' a 'together 1' 'together 12345678' z >>$base
for name in "${names[@]}"; do
    touch -d @6 "$name.jpg"; run; said "Reading ./$name.jpg"$'\n*'
    [[ $(grep -ac ^Reading "$work/said") == 1 ]]; run; said ''
done

# A run goes on past what fails.
for obstacle in index.html $base tessel/x.jpg tessel; do
    gallery x.jpg; echo text >text.jpg; head -c 30 x.jpg >cut.jpg; ln -s none lost.jpg; mkdir folder.jpg
    if [[ $obstacle == tessel ]]; then rmdir tessel; echo file >tessel; else mkdir "$obstacle"; fi; run
    for name in cut folder lost text x; do grep -q "^Reading ./$name.jpg" "$work/said"; done
    grep -q '^Empty input file$' "$work/said" # the folder
    for name in index.html $base tessel/x.jpg; do
        if [[ $name == $obstacle* ]]; then [[ ! -f $name ]]; else [[ -s $name ]]; fi
    done
    [[ $obstacle == index.html || $(<index.html) == *"$end" ]]
    [[ $obstacle == "$base" || $obstacle == tessel || $(cut -f 1 $base | xargs) == 'cut.jpg folder.jpg text.jpg x.jpg' ]]
done

# Entries of any kind and name hold nothing up.
names=('a b' "\"'" $'\t' $'\n' $'\r' $'\1\177' %41 '#?' '<b>' -tsize '' $'\xff\xfe' '&amp' $'\\n$x')
names+=("$(printf 'n%.0s' {1..251})" linked)
gallery "${names[@]/%/.jpg}"
mkfifo fifo.jpg $base; mkdir folder.jpg; : >empty.jpg
ln -s circle.jpg circle.jpg; ln -s /dev/zero endless.jpg; ln -s none dangling.jpg
ln -sf 'a b.jpg' linked.jpg
python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket.jpg")'
run; has_thumbs "${names[@]/%/.jpg}"; [[ $(find tessel -type f -printf x) == xxxxxxxxxxxxxxxxx ]]

# What stands in the place of a file of the gallery makes way, and what it leads to stays as it is.
gallery linked.jpg hard.jpg fifo.jpg socket.jpg
echo outside >../elsewhere/file; mkdir ../elsewhere/drafts; cp "$work/picture" ../elsewhere
ln -s ../../elsewhere/drafts $base.new; ln -s ../linked.jpg tessel; ln hard.jpg tessel
ln -s ../elsewhere/file index.html; ln -s /dev/zero $base; mkfifo tessel/fifo.jpg
(cd tessel; python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket.jpg")')
run; has_thumbs linked.jpg hard.jpg fifo.jpg socket.jpg; [[ ! -e $base.new ]]
for name in *.jpg; do cmp "$work/picture" "$name"; done
[[ -f index.html && ! -L index.html && -f $base && ! -L $base ]]
[[ $(<../elsewhere/file) == outside && -z $(ls ../elsewhere/drafts) ]]
grey 400 2 >wide.jpg; ln -s none tessel/wide.jpg; run -tsize 40000 .; [[ -L tessel/wide.jpg ]]
gallery x.jpg; ! mknod tessel/x.jpg c 1 3 2>/dev/null || { run; [[ -c tessel/x.jpg ]]; } # /dev/null

# Of links in the thumbnail folder's place only those to a thumbnail folder are followed: one that is
# empty, or holds a database.
for held in '' tesselbase.txt x.jpg missing folder; do
    gallery x.jpg; rmdir tessel; ln -s ../elsewhere tessel
    case $held in
        '') ;;
        missing) rmdir ../elsewhere ;;
        folder) mkdir ../elsewhere/tesselbase.txt ;;
        *) echo original >../elsewhere/$held ;;
    esac
    run; said $'Reading ./x.jpg\n*\nWriting ./tessel/x.jpg'; [[ -L tessel && $(<index.html) == *"$end" ]]
    first=$(<"$work/said"); run
    case $held in
        x.jpg) said "$first"; [[ $(ls ../elsewhere) == x.jpg && $(<../elsewhere/x.jpg) == original ]] ;;
        missing) said "$first"; [[ ! -e ../elsewhere ]] ;;
        folder) said "$first"; [[ $(ls ../elsewhere) == tesselbase.txt ]] ;;
        *) said ''; has_thumbs x.jpg; grep -q '^x.jpg' ../elsewhere/tesselbase.txt ;;
    esac
done

# Ordinary files keep mode and owner.
gallery x.jpg; touch $base tessel/x.jpg index.html; chmod 604 $base tessel/x.jpg index.html
[[ $EUID -ne 0 ]] || chown 65534:65533 $base tessel/x.jpg index.html
owner=$(stat -c '604 %u %g' $base); run; has_thumbs x.jpg; [[ -s $base && -s index.html ]]
[[ $(stat -c '%a %u %g' $base tessel/x.jpg index.html | sort -u) == "$owner" ]]

# A picture on which somebody holds a lease is waited for.
gallery x.jpg; python3 - <<'END'; [[ -s $base ]]; has_thumbs x.jpg
import fcntl, signal, subprocess
with open("x.jpg", "r+b") as picture:
    signal.signal(signal.SIGIO, lambda *_: fcntl.fcntl(picture, fcntl.F_SETLEASE, fcntl.F_UNLCK))
    try:
        fcntl.fcntl(picture, fcntl.F_SETLEASE, fcntl.F_WRLCK)
    except (AttributeError, OSError):
        print("program_test: no leases in this system")
    subprocess.run(["timeout", "300", "tessel", "."], check=True, capture_output=True)
END

# Readers that go away end nothing.
gallery {a,b,c}.jpg; head -c -20 a.jpg >cut.jpg
{ sleep 0.2; tessel . 2>&1; echo goes on >status; } | true
[[ $(<status) == 'goes on' && -s tessel/cut.jpg ]]; has_thumbs {a,b,c}.jpg; run; said ''

# Runs that are killed, or two at once, end like one.
gallery {1..20}.jpg; printf 'gone.jpg\t7\n' >$base; run; expected=$(state)
for i in {0..39}; do
    rm tessel/*; printf 'gone.jpg\t7\n' >$base
    tessel . &>/dev/null &
    if ((i % 4)); then sleep "$(printf 0.%03d "$i")"; kill -KILL $! || true; else tessel .; fi &>/dev/null
    wait $! 2>/dev/null || true
    run; [[ $(state) == "$expected" ]]
done

# Runs within small limits. Three descriptors are the standard ones, and the page takes up the next.
# Sanitizers and emulators need more to start with.
gallery {1..50}.jpg; run; has_thumbs {1..50}.jpg; expected=$(state)
less='exec 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-; ulimit -n'
if may "$less 4;"; then
    said 'Reading *'; [[ $(state) == "$expected" ]]
    rm -r tessel; under "$less 5;" .; [[ $(state) == "$expected" ]]
fi
rm -r tessel; under 'exec >&-;' .; [[ $(state) == "$expected" ]]
rm -r tessel; under 'exec <&- >&- 2>&-;' .; [[ $(state) == "$expected" ]]
gallery; grey 9000 9000 -progressive >large.jpg; grey 20000 14000 >long.jpg
run; [[ -s tessel/large.jpg && -s tessel/long.jpg ]]; rm -r tessel
if may 'ulimit -v 60000;'; then
    said $'*Reading ./large.jpg\n*'; [[ ! -e tessel/large.jpg && -s tessel/long.jpg ]]
    rm large.jpg; cp "$work/picture" grown.jpg; under 'ulimit -v 60000;' -tsize 30000 .
    [[ ! -e tessel/grown.jpg ]]; run; said ''
fi

# A file that a file system is mounted on can't be replaced, and is written.
gallery x.jpg; : | tee $base >../elsewhere/file; mount="mount --bind ../elsewhere/file $base"
mount='exec unshare -m bash -c "'$mount' && exec \"\$@\"" bash "$@";'
if may "$mount"; then [[ $(<../elsewhere/file) == $'x.jpg\t'* && ! -e $base.new ]]; fi

# Databases of anything are read, and healed.
gallery x.jpg
for content in 'cat "$0"' 'head -c 100000000 /dev/zero' 'yes ""' 'yes x.jpg 9' \
    'tr "\\0" "\\t" </dev/zero' 'tr "\\0" 9 </dev/zero' 'seq -f "%.0f.jpg	1" 1000000'; do
    rm -f tessel/x.jpg; head -c 50000000 < <(bash -c "$content" "$work/bin/program" 2>/dev/null) >$base
    run; has_thumbs x.jpg; cp $base "$work/healed"; run; said ''; cmp $base "$work/healed"
done

# A hundred thousand entries are done on a small stack.
gallery last.jpg; seq -f %.0f.jpg 100000 | xargs touch
under 'ulimit -s 256;' .; has_thumbs last.jpg; [[ $(tail -c 99 index.html) == *"$end" ]]
[[ $(wc -l <$base) == 100001 ]]

# A full disk ends the run, and the next goes on. A database that can't be written whole doesn't take
# the place of the old one.
full='trap "" XFSZ; ulimit -f 8;'
gallery; grey 1000 1000 >noise.jpg
if under "$full" -tsize 1000 .; then false; fi
said '*Output file write error --- out of disk space?*'; run; said $'Reading ./noise.jpg\n*'
seq -f $'%.0f.jpg\t1' 10000 12000 >$base; printf 'noise.jpg\t99999999999\n' >>$base; expected=$(state)
under "$full" .; said ''; [[ $(state) == "$expected" && ! -e $base.new ]]

# What can't be changed stays as it is; the superuser, who may change everything, becomes somebody else.
other=''; [[ $EUID -ne 0 ]] || other='exec setpriv --reuid=65534 --regid=65534 --clear-groups "$@";'
gallery; may "$other" || exit 0
gallery x.jpg; chmod 555 . tessel; expected=$(state)
under "$other" .; said $'Reading ./x.jpg\n*'; [[ $(state) == "$expected" ]]
# But for its files that may be.
chmod 755 . tessel; touch index.html $base; chmod 666 index.html $base; chmod 555 . tessel
under "$other" .; grep -q '^x.jpg' $base; [[ $(<index.html) == *"$end" ]]
echo shared | tee index.html >$base; ln index.html $base ../elsewhere
under "$other" .; [[ $(cat index.html $base) == $'shared\nshared' ]]
# Nor is a folder changed that may be entered, and not listed.
chmod 755 .; rm index.html; chmod 333 .; under "$other" .; said ''; [[ ! -e index.html ]]
# Nor a file that can't be written, or whose records can't be read; somebody else's stays theirs.
for mode in 444 222 666; do
    gallery x.jpg; chmod 777 . tessel; printf 'old\t1\n' | tee index.html >$base
    [[ $EUID -ne 0 || $mode == 666 ]] || chown 65534:65534 index.html $base
    chmod $mode index.html $base; owner=$(stat -c '%a %u' $base); under "$other" .; has_thumbs x.jpg
    [[ $(stat -c '%a %u' $base) == "$owner" ]]; chmod 644 index.html $base
    if [[ $mode == 666 ]]; then [[ $(<$base) == $'old\t1\nx.jpg\t'* ]]; else [[ $(<$base) == $'old\t1' ]]; fi
    if [[ $mode == 444 ]]; then cmp index.html $base; else [[ $(<index.html) == *"$end" ]]; fi
done
