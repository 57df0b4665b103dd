#!/usr/bin/env bash
# What bash completes for tessel: completion_test.sh FILE
set -euo pipefail

# shellcheck source=app/tessel.bash-completion
source "$1"
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cd "$folder"
mkdir -p 'my photos/sub one' 'my photos/sub two' mine "it's"
touch my.jpg 'my photos/subject.jpg'

# expect WORDS... = COMPLETIONS...: what the last word may become, in any order.
program=tessel
expect() {
    COMP_WORDS=("$program")
    while [[ $1 != = ]]; do
        COMP_WORDS+=("$1")
        shift
    done
    shift
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _tessel
    local found wanted
    found=$(printf '%s\n' "${COMPREPLY[@]}" | sort)
    wanted=$(printf '%s\n' "$@" | sort)
    [[ $found == "$wanted" ]] || {
        printf '%s\n' "completing '${COMP_WORDS[*]}', wanted:" "$wanted" "found:" "$found" >&2
        exit 1
    }
}

expect '' = 'my photos' mine "it's"
expect my = 'my photos'
expect 'my photos/s' = 'my photos/sub one' 'my photos/sub two'
expect nothing =
expect - = -tsize
expect -x =
expect -tsize 1 = 128 192
expect -tsize '' = 96 128 192 256 384 512
expect -tsize my =
expect -tsize 192 m = 'my photos' mine
expect -tsize 192 - = -tsize
program=tessel-tree
expect --p = --prune --page
expect -tsize 1 = 128 192
expect --log my.j = my.jpg
expect -j '' =
expect m = 'my photos' mine
expect - = -j -S -tsize --prune --page --log --help --version
expect -S '' =
program=/usr/bin/tessel
expect - = -tsize
for name in tessel tessel-tree; do [[ $(complete -p $name) == *"-o filenames -F _tessel $name" ]]; done
