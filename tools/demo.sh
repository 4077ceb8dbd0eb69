#!/bin/sh
# Restores the bundled example recording and shows where the results are.
set -eu
build=${1:-build}
render="$build/app/tindle-render"
example=examples/damaged-example.flac
out=demo-out
mkdir -p "$out"
echo "Restoring $example (15 s of music with clicks and crackle) ..."
"$render" --overwrite --report "$out/report.json" "$example" "$out/restored.wav"
"$render" --overwrite --quiet --residual "$example" "$out/removed.wav"
here=$(pwd)
echo
echo "Results:"
echo "  restored audio:       $here/$out/restored.wav"
echo "  what was removed:     $here/$out/removed.wav"
echo "  per-second report:    $here/$out/report.json"
echo
echo "The plug-ins:"
echo "  VST3:       $here/$build/plugin/Tindle_artefacts/Release/VST3/Tindle.vst3"
echo "  LV2:        $here/$build/plugin/Tindle_artefacts/Release/LV2/Tindle.lv2"
echo "  Standalone: $here/$build/plugin/Tindle_artefacts/Release/Standalone/Tindle"
