#!/usr/bin/env bash
# usage: ReportPageTest.sh KORMELIN_SEGMENT MAKE_SLAP
# The page of --report, in a headless Chromium if that is installed: its cards, and what sorting and filtering do. Ends
# with 77 where there is none.
set -euo pipefail
program=$1
make_slap=$2
. "$(dirname -- "$0")/ProgramTools.sh"
command -v chromium >/dev/null || exit 77

draw four-fingers-right a.bmp
draw three-fingers b.bmp
draw one-finger c.bmp
printf 'no picture' >'d <b>"&.bmp'
run 3 --expect 2 --report page.html ./*.bmp
[ "$(ls page.html*)" = page.html ] || fail "something is left: $(ls page.html*)"

# page SCRIPT: what the browser makes of the page after the script: outcomes of the cards that are shown, in order, and
# what it complains about.
page()
{
    { cat page.html; printf '<script>%s</script>' "$1"; } >opened.html
    HOME=$folder timeout 120 chromium --headless --no-sandbox --disable-gpu --user-data-dir="$folder/chromium" \
        --enable-logging=stderr --dump-dom "file://$folder/opened.html" >dom 2>log || fail "chromium: $(cat log)"
    ! grep -q 'CONSOLE' log || fail "the page complains: $(grep CONSOLE log)"
    shown=$(grep -o '<article [^>]*>' dom | grep -v ' hidden' | sed -E 's/.*data-index="([0-9]+)".*/\1/' | tr '\n' ' ')
}

page ''
[ "$shown" = "1 2 3 4 " ] || fail "not the cards: $shown"
[ "$(grep -o '<rect' dom | wc -l)" -eq 8 ] || fail "not eight frames"
grep -q 'd &lt;b&gt;"&amp;.bmp</h2>' dom || fail "a name is not what it was: $(grep '<h2>' dom)"
page 'select.value = "outcome"; select.onchange();'
[ "$shown" = "4 3 1 2 " ] || fail "not by outcome: $shown"
page 'select.value = "fewest fingers"; select.onchange();'
[ "$shown" = "4 3 2 1 " ] || fail "not by fingers: $shown"
page 'const box = document.querySelector("[name=segmented]"); box.checked = false; box.onchange();'
[ "$shown" = "3 4 " ] || fail "not filtered: $shown"
echo "the page of a report does what it says"
