#!/usr/bin/env bash
# What the Vulkan layer's tests check on a sample, at length: what Vulkan's validation says of the overlay over
# random sequences of a program's calls, what it says over other overlays, each call that may be refused, and
# whether memory or descriptors grow. Prints the figures, and fails when one is not as it should be.
# Usage: scripts/vulkan-checks.sh [--sample BUILD]   --sample: a short form, with what that folder has
set -euo pipefail
cd "$(dirname "$0")/.."

sequences=2000
soak=600
growth=2048    # KiB
build=$PWD/build/release
if [ "${1-}" = --sample ]; then
    sequences=100
    soak=20
    growth=6144    # the frame times of the last minute are still filling their room
    build=$2
else
    scripts/install-dependencies.sh build test opengl-bench
    cmake --preset release -DBUILD_TESTING=ON >/dev/null
    cmake --build --preset release --target kordanixctl kordanix_opengl kordanix_preload kordanix_vulkan \
        vulkan_client vulkan_stand_in vulkan_programs_test >/dev/null
fi

folder=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp -noreset 3>"$folder/display" 2>/dev/null &
server=$!
trap 'kill $server; rm -rf "$folder"' EXIT
until [ -s "$folder/display" ]; do
    kill -0 $server || { echo "Xvfb did not start" >&2; exit 1; }
    sleep 0.1
done
DISPLAY=:$(cat "$folder/display")
XDG_RUNTIME_DIR=$folder
VK_ICD_FILENAMES=$(echo /usr/share/vulkan/icd.d/lvp_icd.*.json)
export DISPLAY XDG_RUNTIME_DIR VK_ICD_FILENAMES
client=$build/bin/vulkan_client
run=("$build/bin/kordanixctl" run --)
failed=no
fail() { echo "FAILED: $*" >&2; failed=yes; }

cd "$folder"
settings() {
    printf 'khronos_validation.%s\n' "enables = $1" 'debug_action = VK_DBG_LAYER_ACTION_LOG_MSG' \
        'report_flags = error,warn,perf' 'log_filename = stdout' >vk_layer_settings.txt
}
synchronisation=VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT
practices=VK_VALIDATION_FEATURE_ENABLE_BEST_PRACTICES_EXT
# Messages in the program's output; of best practices when that is asked for.
validated() { VK_INSTANCE_LAYERS=VK_LAYER_KHRONOS_validation VK_LOADER_DEBUG=layer "$@" >out 2>err; }
messages() { grep -cE 'VUID|SYNC-|UNASSIGNED-|Validation (Error|Warning|Performance)' out || true; }

settings $synchronisation
found=0
each=20
for first in $(seq 1 $each $sequences); do
    # shellcheck disable=SC2046
    validated "${run[@]}" "$client" flight=$((1 + first / each % 3)) $(seq -f 'random %g' "$first" $((first + each - 1))) ||
        fail "sequences from $first: exit status $?"
    count=$(messages)
    [ "$count" = 0 ] || { grep -m 1 -E 'VUID|SYNC-|Validation' out >&2; fail "sequences from $first: $count messages"; }
    found=$((found + count))
    # Ours is inserted last, nearest to the program, or validation would not have seen its calls.
    order=$(grep -o 'Inserted device layer "[A-Za-z_]*"' err | tail -1)
    [ "$order" = 'Inserted device layer "VK_LAYER_KORDANIX_overlay"' ] || fail "layers: $order"
done
echo "Random sequences under validation with synchronisation and thread safety, of one to three frames under way: $sequences, messages: $found"

if [ $soak != 20 ]; then
    settings "$synchronisation,$practices"
    # The loader puts a folder's layers above those of the next folder.
    mkdir above below
    cp /usr/share/vulkan/explicit_layer.d/VkLayer_MESA_overlay.json above
    cp /usr/share/vulkan/explicit_layer.d/VkLayer_khronos_validation.json below
    mesa="env VK_LAYER_PATH=$PWD/above:$PWD/below VK_INSTANCE_LAYERS=VK_LAYER_MESA_overlay:VK_LAYER_KHRONOS_validation"
    for candidate in "bare:" "ours:${run[*]}" "mangohud:mangohud" "Mesa's overlay:$mesa"; do
        # shellcheck disable=SC2086
        validated ${candidate#*:} vkcube --c 120 || true
        echo "vkcube, 120 frames, ${candidate%%:*}: $(grep -cE 'VUID|SYNC-' out || true) errors and hazards," \
            "$(grep -c 'UNASSIGNED-BestPractices' out || true) of best practices"
    done
    (cd "$build/tests/vulkan" && EVERY_REFUSAL=1 "$build/bin/vulkan_programs_test" --gtest_filter='*Refused*' | tail -1) ||
        fail "a refused call"
fi

"${run[@]}" "$client" present 1000000000 >/dev/null 2>&1 &
sleep $((soak / 2))
pid=$(pgrep -n -x vulkan_client)
resident() { sed -n 's/^VmRSS:[^0-9]*\([0-9]*\).*/\1/p' "/proc/$pid/status"; }
descriptors() { ls "/proc/$pid/fd" | wc -l; }
before=$(resident)
open=$(descriptors)
sleep $((soak / 2))
after=$(resident)
echo "Soak of $soak s: $before KiB, then $after KiB; $open descriptors, then $(descriptors)"
[ $((after - before)) -lt $growth ] || fail "memory grew"
[ "$(descriptors)" -le $((open + 2)) ] || fail "descriptors grew"
kill "$pid"
[ $failed = no ]
