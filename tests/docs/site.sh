#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# site.sh DOXYFILE SOURCE: Doxygen has no warning; what it makes holds every page and every class, loads nothing from
# outside, names no folder of this machine, and its links lead somewhere.
set -eu
. "$(dirname "$0")/check.sh"
{
    cat "$1"
    echo "OUTPUT_DIRECTORY = \"$work\""
} >"$work/Doxyfile"
expect_status 0 doxygen "$work/Doxyfile"
expect_lines errors 0
site=$work/html
cp -r "$2/examples" "$work/examples" # as installed: beside the site

cd "$site"
for class in kepClient kepAudio kepFactory kepCatalogue JValue JDomParser; do
    [ -e "class$class.html" ] || fail "no page on $class"
done
grep -q 'Connects the source' classkepAudio.html || fail "what a header says of a member is not there"
grep -q '>Life cycle<' classkepClient.html || fail "the banners of a class are not there"
grep -q "the backend's code, KEP_RESULT_FAILED when there is none" classkepClient.html ||
    fail "what a banner says is not there"
grep -q 'What the television.s GPIO library must supply' hwiogpio_8h.html || fail "what a header is for is not there"
for page in "$2"/*.md "$2"/docs/*.md "$2"/docs/decisions/*.md; do
    title=$(sed -n 's/^# //p' "$page" | head -n 1)
    grep -qF ">$title<" ./*.html || fail "no page \"$title\" ($page)"
done

! grep -oE '(src|data)="(https?:)?//[^"]*"|<link[^>]*href="(https?:)?//[^"]*"|@import[^;]*|url\("?(https?:)?//[^)]*' \
    ./*.html ./*.css ./*.js | grep . || fail "something is loaded from outside"
! grep -lF "$2" -r . || fail "names a folder of this machine"

perl -e '
    for my $file (glob "*.html") {
        open my $handle, "<", $file or die;
        my $text = do { local $/; <$handle> };
        while ($text =~ /(?:href|src)="([^"#?]+)/g) {
            next if $1 =~ /^(?:https?|javascript):/ || -e $1;
            print "$file: $1 does not exist\n";
            $bad = 1;
        }
    }
    exit($bad ? 1 : 0);
' || fail "links lead nowhere"
