#!/usr/bin/env bash
# Shows what the library does to camera images: builds the workbench and runs it on a simulated camera and, where the
# data folder is there (QX_SAMPLE_DATA, by default ../shared/data), on real frames. Everything lands in demo-output/.
set -euo pipefail
cd "$(dirname "$0")"
root=$PWD
out=$root/demo-output

say() { printf '\n== %s\n' "$*"; }
note() { printf '%s\n' "$*" | fold -s -w 110 | sed 's/^/   /; s/ *$//'; }
# Runs the workbench and shows the command as one would type it.
run() {
    local word line='$ qxbackground'
    for word in "$@"; do
        case $word in *' '*) line+=" '$word'" ;; *) line+=" $word" ;; esac
    done
    printf '%s\n' "$line" | fold -s -w 118 | sed '2,$s/^/    /'
    "$root/build/linux/bin/qxbackground" "$@"
}
# One number out of the statistics of a file.
number() { "$root/build/linux/bin/qxbackground" statistics "$2" --json | sed -n "s/.*\"$1\": \([0-9.]*\).*/\1/p"; }

say "Packages (installs what is missing)"
scripts/install-deps.sh build
echo "all there"

say "Building the library and the workbench (the first time takes a minute or two)"
cmake --preset linux --log-level=NOTICE >/dev/null
cmake --build --preset linux --target QX_BACKGROUNDCORRECTION qxbackground -- --quiet | { grep -v 'no work to do' || true; }
echo "build/linux/bin/qxbackground is up to date"

rm -rf "$out"
mkdir "$out"
cd "$out"

say "1. A simulated camera: dark stacks and an image at 1 s and at 2 s, and the noise-free truth"
run simulate -o simulated --seed 1 --frames 10 --exposures 1,2

say "2. Ten dark frames of 1 s make a correction; it corrects an image of 2 s"
run correct --dark simulated/dark_1s.tif --dark-exposure 1 --dark-intensity 100 --exposure 2 --intensity 100 \
    simulated/light_2s.tif -o corrected_2s.tif --picture simulated.png
sky=$(number median simulated/truth_scene_2s.tif)
after=$(number median corrected_2s.tif)
note "The glow in the corner and the stripes are gone: see row and column pattern. The sky alone is $sky ADU, the" \
     "corrected image has $after. The difference is the camera's offset: it does not grow with exposure, but the whole" \
     "background is scaled, so that at twice the exposure it is subtracted twice. Dark frames of the images' own" \
     "exposure avoid that:"
run correct --dark simulated/dark_2s.tif --dark-exposure 2 --dark-intensity 100 --exposure 2 --intensity 100 \
    simulated/light_2s.tif -o corrected_2s_own.tif
note "Single hot pixels stay, in every corrected image here: the 3 x 3 median filter takes them out of the" \
     "correction, so that nothing is subtracted for them."

say "3. The same through a calibration file, loaded by a second process"
run build calibration.qxb --key "1 s" --exposure 1 --intensity 100 simulated/dark_1s.tif
run build calibration.qxb --key "2 s" --exposure 2 --intensity 100 simulated/dark_2s.tif
run list calibration.qxb
run check calibration.qxb
run apply calibration.qxb --key "1 s" --exposure 2 --intensity 100 simulated/light_2s.tif -o corrected_by_file.tif \
    --no-statistics
cmp corrected_2s.tif corrected_by_file.tif
echo "corrected_by_file.tif and corrected_2s.tif are identical, byte for byte"

frames=${QX_SAMPLE_DATA:-$root/../shared/data}/darks-sbig-st10/crop512
if [ -d "$frames" ]; then
    ln -s "$(cd "$frames" && pwd)" real
    say "4. Real frames of a cooled CCD camera: nine dark frames of 60 s correct the tenth"
    darks=(real/dark_60s_*.tif)
    last=${darks[-1]}
    nine=("${darks[@]:0:${#darks[@]}-1}")
    real=(--dark-exposure 60 --dark-intensity 100 --exposure 60 --intensity 100)
    run correct --dark "${nine[@]}" "${real[@]}" "$last" -o real_dark_corrected.tif --picture real_dark.png
    note "The background is gone: the median falls to about 0. What is left is noise, and the half of it that lies" \
         "below 0 is clipped, which hides the rest of the pattern. Single hot pixels stay (see the maximum): the median" \
         "filter takes them out of the correction. At a level of 80 % next to nothing is clipped, and the numbers show" \
         "what remains: the noise of the frame itself, and stripes well below those of the image:"
    run correct --dark "${nine[@]}" "${real[@]}" --level 80 "$last" -o real_dark_level80.tif
    note "And a star field with all ten dark frames. The correction takes its level off; noise and stripes of this" \
         "image come with its light, not from the background, and stay:"
    run correct --dark "${darks[@]}" "${real[@]}" real/light_60s_200.tif -o real_light_corrected.tif \
        --picture real_light.png
else
    say "4. No real frames at $frames: set QX_SAMPLE_DATA to their folder to see them, too"
fi

say "5. An offline store: two sessions at two exposures, one calibration file per group"
for session in 1 2; do
    "$root/build/linux/bin/qxbackground" simulate -o "session$session" --seed "1$session" --width 256 --height 256 \
        --exposures 1,2 >/dev/null
    mkdir -p store
    for exposure in 1 2; do
        run store add store/cal --group Session --group Exposure --key "Session,$session,Exposure,$exposure" \
            --exposure "$exposure" --intensity 100 "session$session/dark_${exposure}s.tif"
    done
done
note "Reopened from any one of its files, which records the grouping names:"
run store list store/cal_Session_2_Exposure_1
note "The key finds the group; an image of session 2 gets the correction of session 2:"
run store apply store/cal_Session_1_Exposure_1 --key Session,2,Exposure,2 --exposure 2 --intensity 100 \
    session2/light_2s.tif -o session2_corrected.tif --picture store.png
run correct --dark session2/dark_2s.tif --dark-exposure 2 --dark-intensity 100 --exposure 2 --intensity 100 \
    session2/light_2s.tif -o session2_direct.tif --no-statistics
cmp session2_corrected.tif session2_direct.tif
echo "session2_corrected.tif is identical to what session 2's own dark frames give"

say "Pictures: before, background and after side by side; every panel spans the same number of ADU"
for picture in *.png; do
    echo "  $out/$picture"
done
