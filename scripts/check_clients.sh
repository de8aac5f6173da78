#!/usr/bin/env bash
# Runs the engine inside real chess clients on a screen that nobody sees, and checks what both said and how it ended.
#   scripts/check_clients.sh [--engine FILE] [--games N] [--keep] [CHECK ...]
# CHECK is one of these; without any, all are run:
#   adapter    PolyGlot: options of every type, a value with blanks, a move
#   xboard     XBoard through PolyGlot: a match of N games (4) against Fairy-Max, pondering on
#   chess960   the same against Glaurung, in Chess960
#   scid       Scid: analysis, and a move of the engine added to the game
#   pychess    PyChess: the first moves of a game against Fairy-Max
#   python     python-chess: the two blocks of docs/bots.md, lines, Chess960, pondering; skipped where it is missing
#   compliance fastchess: its compliance steps; skipped where it is missing
# The engine lies in a directory whose name has blanks, and all that it is sent and says is recorded. --keep leaves
# the records, PGN files and pictures of the screen. Takes about five minutes. The exit status is 1 if a check failed.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."
top=$PWD
source scripts/common.sh
PATH=$PATH:/usr/games # where Debian puts chess programs, and not on root's path

engine='' games=4 keep=false checks=()
while (($#)); do
    case $1 in
        --engine)
            engine=$(cd "$caller" && realpath "${2:?--engine needs a file}")
            shift
            ;;
        --games)
            games=${2:?--games needs a number}
            shift
            ;;
        --keep) keep=true ;;
        adapter | xboard | chess960 | scid | pychess | python | compliance) checks+=("$1") ;;
        -h | --help) usage 0 ;;
        *) usage ;;
    esac
    shift
done
[[ $games =~ ^[1-9][0-9]*$ ]] || usage
if [[ $engine && ! -x $engine ]]; then
    echo "check_clients.sh: no engine at $engine" >&2
    exit 2
fi
((${#checks[@]})) || checks=(adapter xboard chess960 scid pychess python compliance)

# Debian has neither of these two, so they are taken where they are. Debian's Python may be hidden by another one.
chessPython=''
for python in python3 /usr/bin/python3; do
    if "$python" -c 'import chess.engine' 2>/dev/null; then chessPython=$python && break; fi
done
# missing CHECK: prints what it needs and is not here; fails if nothing is missing.
missing() {
    case $1 in
        python) [[ -z $chessPython ]] && echo "no python3 with python-chess" ;;
        compliance) ! command -v fastchess >/dev/null && echo "no fastchess on the path" ;;
        *) false ;;
    esac
}

screen=false
for check in "${checks[@]}"; do
    [[ $check == @(python|compliance) ]] && continue
    screen=true
    need Xvfb xvfb
    need xdotool xdotool
    need import imagemagick
    need polyglot polyglot
    case $check in
        xboard) need xboard xboard && need fairymax fairymax ;;
        chess960) need xboard xboard && need glaurung glaurung ;;
        scid) need scid scid ;;
        pychess) need pychess pychess && need fairymax fairymax ;;
    esac
done
installMissing
if [[ -z $engine ]]; then
    releaseEngine
    engine=$PWD/build/release/tarvok
fi

work=$(mktemp -d)
children=() # process groups that this script started
cleanUp() {
    for child in "${children[@]}"; do kill -- "-$child" 2>/dev/null || true; done
    if $keep; then echo "Records are in $work"; else rm -rf "$work"; fi
}
trap cleanUp EXIT
trap 'exit 1' INT TERM
# Clients keep their settings below HOME; the user's own are left alone.
export HOME=$work/home
unset XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_HOME
mkdir "$HOME"

# start COMMAND...: in the background, in a process group of its own; $started is the group.
start() {
    set -m
    "$@" </dev/null >"$work/client.out" 2>&1 &
    set +m
    started=$!
    children+=("$started")
}
# The client alone is killed, and not the engine: that has to find out by the end of its input.
killStarted() {
    kill -KILL "$started" 2>/dev/null || true
    wait "$started" 2>/dev/null || true
}

# waitFor SECONDS COMMAND...: until the command succeeds; fails when the time is over.
waitFor() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS < end)) || return 1
        sleep 0.2
    done
}

# An installed engine for one check. The clients start `recorded`, which keeps what goes in and out of each process
# and with which status it ended.
installEngine() {
    home="$work/$1/engine with blanks"
    records="$work/$1/records"
    mkdir -p "$home" "$records"
    cp "$engine" "$home/tarvok"
    cat >"$home/recorded" <<EOF
#!/usr/bin/env bash
cd "$home"
record="$records/\$\$"
tee "\$record.in" | { ./tarvok; echo \$? >"\$record.status"; } | tee "\$record.out"
EOF
    chmod +x "$home/recorded"
    cd "$work/$1"
}
sent() { grep -qsxE "$1" "$records"/*.in; }
said() { grep -qsE "$1" "$records"/*.out; }
endedWell() { # every engine process, and at least one, has ended with status 0
    local input
    for input in "$records"/*.in; do
        [[ -f ${input%.in}.status && $(<"${input%.in}.status") == 0 ]] || return 1
    done
}
expectEnd() {
    waitFor 10 endedWell || true
    expect "the engine ends with status 0" endedWell
}

failures=0
# expect TEXT COMMAND...: one line of the result.
expect() {
    local text=$1
    shift
    if "$@"; then
        echo "  ok      $text"
    else
        echo "  FAILED  $text"
        failures=$((failures + 1))
    fi
}
picture() { import -window root "$work/$1.png" 2>/dev/null || true; }

startScreen() {
    start Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$work/display"
    waitFor 20 test -s "$work/display"
    DISPLAY=:$(<"$work/display")
    export DISPLAY
}

# polyglotIni FILE DIRECTORY COMMAND LINE...: the lines go to the engine's section.
polyglotIni() {
    {
        printf '[PolyGlot]\nEngineDir = %s\nEngineCommand = %s\n[Engine]\n' "$2" "$3"
        printf '%s\n' "${@:4}"
    } >"$1"
}

checkAdapter() {
    polyglotIni tarvok.ini "$home" ./recorded 'Hash = 32' 'OwnBook = false' 'King Safety = 80'
    : >out
    {
        printf 'xboard\nprotover 2\n'
        waitFor 20 grep -q 'feature done=1' out || true
        printf 'new\nmemory 64\ncores 2\npost\n'
        printf 'option %s\n' 'Contempt=-20' 'Null Move Pruning=0' 'Clear Hash' "Log File=$home/a log.txt"
        printf 'st 1\nusermove e2e4\n'
        waitFor 20 grep -q '^move ' out || true
        echo quit
    } | timeout 90 polyglot tarvok.ini >>out 2>&1 || true
    expect "spins of the file are sent" sent 'setoption name King Safety value 80'
    expect "checks of the file are sent" sent 'setoption name OwnBook value false'
    expect "a spin set from the client arrives" sent 'setoption name Contempt value -20'
    expect "a check set from the client arrives" sent 'setoption name Null Move Pruning value false'
    expect "a button pressed in the client acts" said 'Clearing Hash'
    expect "a text with blanks arrives whole" test -s "$home/a log.txt"
    expect "memory and cores become Hash and Threads" said 'Threads now set to 2'
    expect "the client gets a move" grep -qE '^move [a-h][1-8]' out
    expectEnd
}

# gamesEndedByRule FILE N: N games with a result, each ended by the rules or a resignation.
gamesEndedByRule() {
    tr '\n' ' ' <"$1" | sed 's/\[Event /\n&/g' | awk -v wanted="$2" '
        !/^\[Event / { next }
        { ++count }
        !/\[Result "(1-0|0-1|1\/2-1\/2)"\]/ { print "          no result: " $0; bad = 1; next }
        # The last comment of a game says how it ended.
        { match($0, /\{[^{}]*\}[^{}]*$/); last = tolower(substr($0, RSTART)) }
        last !~ /mate|repetition|50|fifty|material|resign/ || last ~ /forfeit|illegal|exit|false/ {
            print "          ended otherwise: " last; bad = 1
        }
        END { exit bad || count != wanted }'
}

# match OPPONENT-ARGUMENT... : $games games in XBoard, pondering on.
match() {
    polyglotIni tarvok.ini "$home" ./recorded 'Hash = 32' 'OwnBook = false'
    timeout $((games * 120)) xboard -fcp 'polyglot tarvok.ini' -fd "$PWD" -sd "$PWD" "$@" -mg "$games" \
        -tc 0:06 -mps 0 -inc 0.1 -ponder -xexit -autoInstall '' -soundProgram '' \
        -sgf games.pgn -saveSettingsFile "$work/xboardrc" >xboard.out 2>&1 || echo "          xboard: status $?"
    grep 'final score' xboard.out | sed 's/^xboard: /          /' || true
    expect "$games games ended by the rules" gamesEndedByRule games.pgn "$games"
    expect "a ponder search was hit" sent ponderhit
    expect "a ponder search was stopped" sent stop
    expectEnd
}

checkXboard() {
    match -scp fairymax
}

checkChess960() {
    polyglotIni other.ini "$PWD" glaurung 'Hash = 32' 'OwnBook = false'
    match -variant fischerandom -scp 'polyglot other.ini'
    expect "UCI_Chess960 was set" sent 'setoption name UCI_Chess960 value true'
}

checkScid() {
    local scidWindow analysis
    mkdir -p "$HOME/.scid4.7/config"
    cat >"$HOME/.scid4.7/config/engines.dat" <<EOF
engine {
  Name Tarvok
  Cmd  {$home/recorded}
  Args {}
  Dir  {$home}
  Elo  0
  Time 0
  URL  {}
  UCI 1
  UCIoptions {{Hash 32} {OwnBook false} {{Log File} <empty>} {{King Safety} 80}}
}
EOF
    start scid
    waitFor 30 xdotool search --name 'Tip of the Day' >/dev/null && sleep 1
    xdotool search --name 'Tip of the Day' windowfocus key Escape 2>/dev/null || true
    sleep 1
    scidWindow=$(xdotool search --name '^Scid - ' | head -n 1)
    # Without a window manager Scid closes the first analysis window of a session again, whatever the engine.
    for _ in 1 2 3; do
        xdotool windowfocus "$scidWindow" key F2
        waitFor 6 sent 'go infinite' && break
    done
    expect "spins and texts of the settings are sent" sent 'setoption name King Safety value 80'
    expect "the analysis is started" sent 'go infinite'
    waitFor 10 said ' depth 8 ' || true
    # The button that adds the engine's move to the game, from the left in the row at the bottom.
    analysis=$(xdotool search --name 'Analysis: Tarvok' | tail -n 1)
    xdotool mousemove --window "$analysis" 87 226 click 1 || true
    waitFor 10 sent 'position startpos moves [a-h][1-8][a-h][1-8]' || true
    expect "the engine's move is added to the game" sent 'position startpos moves [a-h][1-8][a-h][1-8]'
    picture scid
    killStarted
    expectEnd
}

checkPychess() {
    local window
    mkdir -p "$HOME/.config/pychess"
    # The list of players is in order of names: the two engines come first and second after "Human Being".
    cat >"$HOME/.config/pychess/engines.json" <<EOF
[{"name": "1 tarvok", "command": "$home/recorded", "protocol": "uci", "recheck": true, "country": "unknown",
  "comment": "", "level": 20},
 {"name": "2 fairymax", "command": "$(command -v fairymax)", "protocol": "xboard", "recheck": true,
  "country": "unknown", "comment": "", "level": 20}]
EOF
    cat >"$HOME/.config/pychess/config" <<EOF
[General]
dont_show_externals_at_startup = True
ngblitz min = 1
ngblitz moves = 0
ngblitz gain = 0
whiteplayercombobox = 1
blackplayercombobox = 2
skillslider1 = 20
skillslider2 = 20
notimeradio = False
blitzradio = True
playnormalradio = True
EOF
    start pychess --no-version-check
    waitFor 60 xdotool search --name 'Tip Of The day' >/dev/null && sleep 3
    xdotool search --name 'Tip Of The day' windowfocus key Escape 2>/dev/null || true
    sleep 1
    window=$(xdotool search --name 'Welcome - PyChess' | head -n 1)
    xdotool windowfocus "$window" key ctrl+n
    waitFor 10 xdotool search --name '^New Game$' >/dev/null && sleep 1
    picture pychess-new
    xdotool search --name '^New Game$' windowfocus key Return 2>/dev/null || true
    expect "a game is started" waitFor 60 sent 'go wtime .*'
    expect "five moves of the engine are played" waitFor 90 fiveMoves
    picture pychess
    expect "every position was understood" noNullMove
    killStarted
    expectEnd
}
fiveMoves() { (($(cat "$records"/*.in | grep -c '^go ') > 5)); }
noNullMove() { ! said 'bestmove 0000'; }

checkPython() {
    expect "python-chess gets what it asks for" timeout 120 "$chessPython" "$top/scripts/drive_python_chess.py" \
        "$home/recorded" "$top/docs/bots.md"
    expect "a button was pressed" sent 'setoption name Clear Hash'
    expect "Chess960 was switched on" sent 'setoption name UCI_Chess960 value true'
    expect "the engine pondered" sent 'go .*ponder.*'
    expectEnd
}

checkCompliance() {
    expect "every step passes" compliant
    expectEnd
}
compliant() {
    timeout 300 fastchess --compliance "$home/recorded" >steps 2>&1 && grep -qi passed steps && ! grep -qi fail steps &&
        return
    sed 's/^/          /' steps
    false
}

! $screen || startScreen
done=() skipped=()
for check in "${checks[@]}"; do
    if lack=$(missing "$check"); then
        echo "$check: SKIPPED, $lack"
        skipped+=("$check")
        continue
    fi
    done+=("$check")
    echo "$check ($(date +%T))"
    installEngine "$check"
    "check${check^}" || expect "the check comes to its end" false
done
if ((failures)); then
    echo "RESULT: $failures expectations failed"
    exit 1
fi
((${#done[@]})) || { echo "RESULT: nothing was checked; skipped: ${skipped[*]}" && exit 1; }
echo "RESULT: all clients worked (${done[*]})${skipped:+; skipped: ${skipped[*]}}"
