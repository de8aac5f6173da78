#!/usr/bin/env bash
# Plays fast games of the engine against itself through play_match, and counts what goes wrong in them.
#   scripts/soak.sh [--engine FILE] [--tables DIR] [--tc BASE+INCREMENT] [--at-once N] [GAMES]
# The games (default 2000, all played out, with 1+0.01, seconds a side) are shared out over 16 blocks: both modes, 1 and
# 2 threads, without and with endgame tables, standard chess and Chess960. Two games are played at a time where the
# processor has cores for their threads; --at-once sets a number that counts for every block.
# The default engine is the release build, brought up to date first. Games and logs stay in build/soak.
# The exit status is 0 only if every game was played without a crash, an illegal move or a time loss, no process ended
# badly and none wrote to standard error.
set -euo pipefail
shopt -s lastpipe # the end of a pipe runs here, where it can count
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/common.sh"

games=2000 engine='' tables=$here/../../shared/data/syzygy atOnce='' clock=1+0.01
while (($#)); do
    case $1 in
        --engine | --tables | --tc | --at-once)
            value=${2:?"$1 needs a value"}
            case $1 in
                --engine) engine=$(realpath "$value") ;;
                --tables) tables=$value ;;
                --tc) clock=$value ;;
                --at-once) atOnce=$value ;;
            esac
            shift
            ;;
        -h | --help) usage 0 ;;
        [1-9]*) games=$1 ;;
        *) usage ;;
    esac
    shift
done
[[ $games =~ ^[0-9]+$ && $atOnce =~ ^([1-9][0-9]*)?$ ]] || usage
if ! compgen -G "$tables/*.rtbw" >/dev/null; then
    echo "soak.sh: no endgame tables in $tables; name a folder with --tables" >&2
    exit 2
fi
if [[ $engine && ! -x $engine ]]; then
    echo "soak.sh: no engine at $engine" >&2
    exit 2
fi
tables=$(realpath "$tables")

cd "$here/.."
if [[ -z $engine ]]; then
    releaseEngine
    engine=build/release/tarvok
fi
folder=$PWD/build/soak
rm -rf "$folder"
mkdir -p "$folder"
cp "$engine" "$folder/engine" # a build during the soak changes nothing

games=$(((games + 1) / 2 * 2)) # each opening is played with both colours
declare -A total=([games]=0 [crash]=0 ["illegal move"]=0 ["time loss"]=0 [other]=0)
begin=$SECONDS
tell() {
    echo "  ${total[games]} of $games games in $((SECONDS - begin)) s: crashes ${total[crash]}," \
        "illegal moves ${total["illegal move"]}, time losses ${total["time loss"]}, other faults ${total[other]}"
}

otherFault() {
    total[other]=$((total[other] + 1))
    echo "  $1"
}

# Reads what play_match prints: the totals grow with its line for each game.
countGames() {
    local line kind
    while IFS= read -r line; do
        [[ $line == "game "[0-9]*:* ]] || continue
        total[games]=$((total[games] + 1))
        for kind in crash "illegal move" "time loss"; do
            [[ $line == *", $kind by "* ]] || continue
            total[$kind]=$((total[$kind] + 1))
            echo "  $line"
        done
        if ((total[games] % 20 == 0)); then tell; fi
    done
}

# Reads the log of a match for what no result shows: a process that ended badly, words on standard error.
countBadEnds() {
    local line
    while IFS= read -r line; do
        [[ $line =~ :\ (stderr:\ |killed|ended\ by\ |cannot\ be\ run|exit\ status\ ([1-9]|null)) ]] || continue
        otherFault "$line"
    done
}

# playBlock NUMBER GAMES MODE THREADS TABLES VARIANT; MODE is true for the tree, TABLES and VARIANT can be empty.
playBlock() {
    local number=$1 count=$2 mode=$3 threads=$4 path=$5 variant=$6
    local seats=$(($(nproc) / threads)) name=$folder/block$number before=${total[games]} status
    ((seats >= 1)) || seats=1
    ((seats <= 2)) || seats=2
    [[ -z $atOnce ]] || seats=$atOnce
    echo "block $number of 16: $count games of ${variant:-standard chess}, Use MCTS $mode, Threads $threads," \
        "$([[ $path ]] && echo with || echo without) tables, $seats at a time"
    local arguments=(--option Hash=16 --option "Use MCTS=$mode" --option "Threads=$threads")
    [[ -z $path ]] || arguments+=(--option "SyzygyPath=$path")
    arguments+=(--engine "$folder/engine" --name one --engine "$folder/engine" --name two --tc "$clock"
        --games "$count" --concurrency "$seats" --seed "$number" --pgn "$name.pgn" --log "$name.log")
    [[ -z $variant ]] || arguments+=(--chess960)
    set +e
    scripts/play_match.sh "${arguments[@]}" 2>&1 | tee "$name.txt" | countGames
    status=${PIPESTATUS[0]}
    set -e
    # 1 is also the status of a match that was played and had a fault, which is counted by now.
    ((status <= 1)) || otherFault "play_match ended with status $status; see $name.txt"
    ((total[games] - before == count)) || otherFault "only $((total[games] - before)) games; see $name.txt"
    countBadEnds <"$name.log"
    tell
}

block=0
for mode in false true; do
    for threads in 1 2; do
        for path in '' "$tables"; do
            for variant in '' Chess960; do
                # The pairs of games up to the end of this block less those up to its beginning.
                count=$((2 * (games / 2 * (block + 1) / 16 - games / 2 * block / 16)))
                block=$((block + 1))
                ((count == 0)) || playBlock "$block" "$count" "$mode" "$threads" "$path" "$variant"
            done
        done
    done
done
if ((total[games] != games || total[crash] + total["illegal move"] + total["time loss"] + total[other])); then
    echo "Something went wrong; the games and logs are in $folder."
    exit 1
fi
echo "Every game was played without a fault."
