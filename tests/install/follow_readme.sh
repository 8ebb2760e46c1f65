#!/usr/bin/env bash
# Does with an installation what README.md tells a newcomer, by the README's own commands: shows the overlay over glxgears
# and vkcube, changes it in a browser, keeps that, logs twice and compares.
# Usage: follow_readme.sh FOLDER README [SECONDS]    works in the folder, which is HOME too; SECONDS of each log, by default 10
set -euo pipefail
cd "$1"
readme=$(realpath "$2") seconds=${3:-10}
export HOME=$PWD LIBGL_ALWAYS_SOFTWARE=1 XDG_RUNTIME_DIR=$PWD/runtime
unset XDG_CONFIG_HOME XDG_DATA_HOME KORDANIX KORDANIX_RUNTIME_DIR
mkdir -m 700 "$XDG_RUNTIME_DIR"

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

# Waits until the command succeeds, at most 30 seconds.
await() {
    local try
    for try in {1..150}; do
        "$@" >/dev/null 2>&1 && return
        sleep 0.2
    done
    fail "This does not come true: $*"
}

# The command as the README has it, with the log's length of this test.
as_told() {
    grep -qF -- "$1" "$readme" || fail "README.md does not say: $1"
    command=${1/--log-for 10/--log-for $seconds}
}
told() {
    as_told "$1"
    eval "$command"
}

jobs_of_ours=()
trap 'kill "${jobs_of_ours[@]}" 2>/dev/null || true; wait' EXIT
start() {
    as_told "$1"
    eval "exec $command" >"$2" 2>&1 &
    process=$!
    jobs_of_ours+=("$process")
}
end() {
    kill -"$1" "$2"
    wait "$2" 2>/dev/null || true
}

exec {number}<> <(:)
Xvfb -displayfd "$number" -screen 0 800x600x24 -nolisten tcp 2>/dev/null &
jobs_of_ours+=($!)
read -t 30 -r -u "$number" display || fail "Xvfb does not start"
export DISPLAY=:$display

# The browser takes orders through a pipe: a JSON object each, with a zero byte behind it.
mkfifo orders answers
chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$PWD/browser" --remote-debugging-pipe \
    3<orders 4>answers 2>browser.log &
browser=$!
jobs_of_ours+=("$browser")
exec {orders}>orders {answers}<answers

# $1: the order's name; $2: its parameters; $3: more of it. Sets `answer`.
order() {
    local id=$RANDOM
    printf '{"id":%s,"method":"%s","params":%s%s}\0' "$id" "$1" "$2" "${3:-}" >&"$orders"
    answer=
    until [[ $answer == *"\"id\":$id,"* ]]; do
        read -r -d '' -t 60 -u "$answers" answer || fail "The browser does not answer" "$(tail -5 browser.log)"
    done
}
field() { sed -n "s/.*\"$1\":\"\\{0,1\\}\\([^\",}]*\\).*/\\1/p" <<<"$answer"; }

# Opens what `kordanixctl serve` shows, and runs a script there that begins with what this has. Sets `value`.
in_browser() {
    local address target session
    start 'kordanixctl serve' address
    await grep -q '^http' address
    address=$(grep '^http' address)
    order Target.createTarget "{\"url\":\"$address\"}"
    target=$(field targetId)
    order Target.attachToTarget "{\"targetId\":\"$target\",\"flatten\":true}"
    session=$(field sessionId)
    value=
    until [ "$value" = http: ]; do
        order Runtime.evaluate '{"expression":"location.protocol"}' ",\"sessionId\":\"$session\""
        value=$(field value)
    done
    local script="(async () => {
        const until = async test => {
            for (let i = 0; i < 300 && !test(); ++i) await new Promise(done => setTimeout(done, 100));
            if (!test()) throw 'in vain: ' + test + document.body.innerText.slice(0, 200);
        };
        const control = name => document.querySelector('[aria-label=' + name + ']');
        const colored = async () => {
            const picture = document.querySelector('#picture img'), last = picture.src;
            document.querySelector('#take').click();
            await until(() => picture.src !== last && picture.complete && picture.naturalWidth > 0);
            const canvas = new OffscreenCanvas(picture.naturalWidth, picture.naturalHeight).getContext('2d');
            canvas.drawImage(picture, 0, 0);
            const bytes = canvas.getImageData(0, 0, picture.naturalWidth, picture.naturalHeight).data;
            let count = 0;
            for (let i = 0; i < bytes.length; i += 4) {
                count += bytes[i] === 255 && bytes[i + 1] === 0 && bytes[i + 2] === 255;
            }
            return count;
        };
        await until(() => document.body.dataset.state === 'live' && document.title === 'glxgears');
        $1 })().catch(error => '' + error)"
    order Runtime.evaluate \
        "{\"expression\":\"${script//$'\n'/ }\",\"awaitPromise\":true,\"returnByValue\":true}" ",\"sessionId\":\"$session\""
    value=$(field value)
    order Target.closeTarget "{\"targetId\":\"$target\"}"
    end INT "$process"
}

# Over a Vulkan program first.
as_told 'kordanixctl run glxgears     # or vkcube, or yours, with its arguments'
kordanixctl run vkcube >vkcube.out 2>&1 &
vkcube=$!
jobs_of_ours+=("$vkcube")
await kordanixctl picture vkcube.png
end TERM "$vkcube"
[ -s vkcube.png ] || fail "vkcube has no picture"

start 'kordanixctl run glxgears' glxgears.out
glxgears=$process
await kordanixctl picture glxgears.png
in_browser "
    const before = await colored();
    if (!control('widget_memory').checked) control('widget_memory').click();
    for (const [name, value] of [['bg_color', '#ff00ff'], ['bg_transparency', 255]]) {
        control(name).value = value;
        control(name).onchange();
    }
    let after = 0;
    for (let i = 0; i < 50 && after === 0; ++i) after = await colored();
    return before === 0 && after > 500 ? 'changed' : before + ' then ' + after + ' pixels';"
[ "$value" = changed ] || fail "The browser changes nothing: $value"
[ "$(kordanixctl get widget_memory)" = true ] || fail "widget_memory is not on"
told 'kordanixctl save' >save.out
end TERM "$glxgears"
grep -q '^widget_memory' .config/kordanix/glxgears.conf || fail "The profile has not kept it:" "$(cat save.out)"

start 'kordanixctl run glxgears' glxgears.out
glxgears=$process
await kordanixctl picture glxgears.png
in_browser "
    const count = await colored();
    return control('widget_memory').checked && count > 500 ? 'kept' : count + ' pixels';"
[ "$value" = kept ] || fail "The next run has lost it: $value"
end TERM "$glxgears"

# Their user sees the log's seconds pass, and closes the program.
for log in before after; do
    start "kordanixctl run --log=$log --log-for 10 glxgears" "$log.out"
    await bash -c "ls $log/glxgears-*.csv"
    sleep "$((seconds + 2))"
    end TERM "$process"
    grep -q "^  frames .* in $seconds\.[0-4] s" "$log.out" || fail "The run says nothing of its log:" "$(cat "$log.out")"
done
told 'kordanixctl compare before after difference.html' >compare.out
grep -q 'noise' compare.out || fail "The comparison has no answer:" "$(cat compare.out)"
grep -q '</html>' difference.html || fail "The comparison has no page"

left=$(find "$XDG_RUNTIME_DIR" -path '*/run-*')
[ -z "$left" ] || fail "Ended runs have left" "$left"
echo "The README's commands do what it says"
