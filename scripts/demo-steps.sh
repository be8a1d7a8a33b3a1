#!/usr/bin/env bash
# What demo.sh shows, with a workbench that is built. Usage: scripts/demo-steps.sh BIN-FOLDER EMPTY-FOLDER
# Every command is printed as it could be typed; pasted in order into an empty folder they do the same again.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/helpers.sh"
absolute_sample_data
PATH=$(cd "$1" && pwd):$PATH
cd "$2"
out=$PWD

note() { printf '%s\n' "$*" | fold -s -w 110 | sed 's/^/   /; s/ *$//'; }
# Prints a command so that a shell takes it as it is, in lines of bearable length, and runs it.
run() {
    local word line='$'
    for word in "$@"; do
        case $word in '' | *[!A-Za-z0-9_.,/:=+%-]*) word="'${word//\'/\'\\\'\'}'" ;; esac
        if [ $((${#line} + ${#word})) -gt 115 ]; then
            printf '%s \\\n' "$line"
            line='   '
        fi
        line+=" $word"
    done
    printf '%s\n' "$line"
    "$@"
}
# One number out of the statistics of a file.
number() { qxbackground statistics "$2" --json | sed -n "/\"summary\"/,\$ s/.*\"$1\": \([0-9.]*\).*/\1/p"; }

say "To repeat any of it: paste the commands, in order, into a shell in an empty folder, after this one"
echo "\$ PATH='${PATH%%:*}':\$PATH"

say "1. A simulated camera: dark stacks and an image at 1 s and at 2 s, and the noise-free truth"
run qxbackground simulate -o simulated --seed 1 --frames 10 --exposure 1,2

say "2. Ten dark frames of 1 s make a correction; it corrects an image of 2 s"
run qxbackground correct --dark simulated/dark_1s.tif --dark-exposure 1 --dark-intensity 100 --exposure 2 --intensity 100 \
    simulated/light_2s.tif -o corrected_2s.tif --picture simulated.png
sky=$(number median simulated/truth_scene_2s.tif)
after=$(number median corrected_2s.tif)
note "The glow in the corner and the stripes are gone: see row and column pattern. The sky alone is $sky ADU, the" \
     "corrected image has $after. The difference is the camera's offset: it does not grow with exposure, but the whole" \
     "background is scaled, so that at twice the exposure it is subtracted twice. Dark frames of the images' own" \
     "exposure avoid that:"
run qxbackground correct --dark simulated/dark_2s.tif --dark-exposure 2 --dark-intensity 100 --exposure 2 --intensity 100 \
    simulated/light_2s.tif -o corrected_2s_own.tif
note "Single hot pixels stay, in every corrected image here: the 3 x 3 median filter takes them out of the" \
     "correction, so that nothing is subtracted for them."

say "3. The same through a calibration file, loaded by a second process"
run qxbackground build calibration.qxb --key "1 s" --exposure 1 --intensity 100 simulated/dark_1s.tif
run qxbackground build calibration.qxb --key "2 s" --exposure 2 --intensity 100 simulated/dark_2s.tif
run qxbackground list calibration.qxb
run qxbackground check calibration.qxb
run qxbackground apply calibration.qxb --key "1 s" --exposure 2 --intensity 100 simulated/light_2s.tif -o corrected_by_file.tif \
    --no-statistics
run cmp corrected_2s.tif corrected_by_file.tif
echo "corrected_by_file.tif and corrected_2s.tif are identical, byte for byte"

frames=${QX_SAMPLE_DATA:-$root/../shared/data}/darks-sbig-st10/crop512
if [ -d "$frames" ]; then
    say "4. Real frames of a cooled CCD camera: nine dark frames of 60 s correct the tenth"
    run ln -s "$(cd "$frames" && pwd)" real
    darks=(real/dark_60s_*.tif)
    last=${darks[-1]}
    nine=("${darks[@]:0:${#darks[@]}-1}")
    real=(--dark-exposure 60 --dark-intensity 100 --exposure 60 --intensity 100)
    run qxbackground correct --dark "${nine[@]}" "${real[@]}" "$last" -o real_dark_corrected.tif --picture real_dark.png
    note "The background is gone: the median falls to about 0. What is left is noise, and the half of it that lies" \
         "below 0 is clipped, which hides the rest of the pattern. Single hot pixels stay (see the maximum): the median" \
         "filter takes them out of the correction. At a level of 80 % next to nothing is clipped, and the numbers show" \
         "what remains: the noise of the frame itself, and stripes well below those of the image:"
    run qxbackground correct --dark "${nine[@]}" "${real[@]}" --level 80 "$last" -o real_dark_level80.tif
    note "And a star field with all ten dark frames. The correction takes its level off; noise and stripes of this" \
         "image come with its light, not from the background, and stay:"
    run qxbackground correct --dark "${darks[@]}" "${real[@]}" real/light_60s_200.tif -o real_light_corrected.tif \
        --picture real_light.png
else
    say "4. No real frames at $frames: set QX_SAMPLE_DATA to their folder to see them, too"
fi

say "5. An offline store: two sessions at two exposures, one calibration file per group"
run mkdir store
for session in 1 2; do
    run qxbackground simulate -o "session$session" --seed "1$session" --width 256 --height 256 --exposure 1,2
    for exposure in 1 2; do
        run qxbackground store add store/cal --group Session --group Exposure --key "Session,$session,Exposure,$exposure" \
            --exposure "$exposure" --intensity 100 "session$session/dark_${exposure}s.tif"
    done
done
note "Reopened from any one of its files, which records the grouping names:"
run qxbackground store list store/cal_Session_2_Exposure_1
note "The key finds the group; an image of session 2 gets the correction of session 2:"
run qxbackground store apply store/cal_Session_1_Exposure_1 --key Session,2,Exposure,2 --exposure 2 --intensity 100 \
    session2/light_2s.tif -o session2_corrected.tif --picture store.png
run qxbackground correct --dark session2/dark_2s.tif --dark-exposure 2 --dark-intensity 100 --exposure 2 --intensity 100 \
    session2/light_2s.tif -o session2_direct.tif --no-statistics
run cmp session2_corrected.tif session2_direct.tif
echo "session2_corrected.tif is identical to what session 2's own dark frames give"

say "6. Is the calibration good, and for which images? The report says it on one page"
run qxbackground report calibration.qxb --dark simulated/dark_1s.tif simulated/dark_2s.tif --dark-exposure 1,2 \
    --against simulated/light_2s.tif --exposure 2 -o report.html
note "Open it in a browser; it needs no network:"
echo "  $out/report.html"

say "Pictures: before, after, the background and what is left, each with a scale of its values"
for picture in *.png; do
    echo "  $out/$picture"
done
