#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# logmessages.sh SOURCE: docs/log-messages.md is what docs/log-messages makes of the sources, lists every line that the
# expected traces hold, and cannot drift.
set -eu
. "$(dirname "$0")/check.sh"
source=$1
"$source/docs/log-messages" --check

# --- Every line of a trace stands on the page, with its level and id
perl -ne '
    BEGIN { %level = (3 => "error", 4 => "warning", 6 => "info", 7 => "debug") }
    if ($ARGV =~ /\.md$/) {
        my ($id, $level, $text) = /^\| (\w*) \| (\w+) \| `(.*?)` \| / or next;
        $text =~ s/\\\|/|/g;
        my $pattern = join ".*", map { quotemeta } split /%[a-z0-9.]+/, $text =~ s/\\n/\n/gr, -1;
        push @{$known{"$level $id"}}, qr/^(?:\w+:~?\w+\(\w+\) )?$pattern$/s;
    } elsif (my ($level, $id, $text) = /"event":"log",(?:.*?,)?"level":(\d),"id":"(\w*)","text":"((?:[^"\\]|\\.)*)"/) {
        ++$lines;
        $text =~ s/\\(.)/$1 eq "n" ? "\n" : $1/ge;
        next if grep { $text =~ $_ } @{$known{"$level{$level} $id"}};
        print "not on the page: level $level, id \"$id\": $text\n";
        $failed = 1;
    }
    END { die "no log lines in the traces\n" unless $lines > 300; print "$lines lines\n"; $? = 1 if $failed }
' "$source/docs/log-messages.md" "$source"/tests/traces/*.expected "$source"/demo/*.expected "$source"/demo/*/*.expected

# --- On a copy: what is changed shows
copy=$work/tree
refresh() {
    rm -rf "$copy"
    mkdir -p "$copy/docs"
    cp "$source/docs/log-messages"* "$copy/docs/"
    cp -r "$source/src" "$copy/src"
    chmod -R u+w "$copy"
}
changed() { # FILE SED-SCRIPT
    refresh
    sed -i "$2" "$copy/$1"
    ! cmp -s "$source/$1" "$copy/$1" || fail "$1 is as before: $2"
}

refresh
expect_status 0 "$copy/docs/log-messages" --check
changed src/tv/keptvaudio.output.cpp 's/Request to set soundOutput/Request for soundOutput/'
! "$copy/docs/log-messages" --check 2>"$work/errors" || fail "a line that has changed its text is not missed"
expect errors 'no row for the log line: Request for soundOutput %s'
changed src/tv/keptvaudio.output.cpp 's/"SOUNDOUTPUT_NOT_SUPPORTED"/"NOT_SUPPORTED"/'
! "$copy/docs/log-messages" --check 2>"$work/errors" || fail "a line that has changed its id is not missed"
expect errors 'not what docs/log-messages makes'
expect_status 0 "$copy/docs/log-messages"
expect_status 0 grep -q '^| NOT_SUPPORTED | error | `Not supported soundoutput` |' "$copy/docs/log-messages.md"
changed docs/log-messages.table 's/^Not supported soundoutput |.*/Unsupported soundoutput | never/'
! "$copy/docs/log-messages" --check 2>"$work/errors" || fail "a missing row is not missed"
expect errors 'there is no such log line: Unsupported soundoutput'
expect errors 'no row for the log line: Not supported soundoutput'
changed docs/log-messages.table 's/^\(device can.t close | .*\) |.*/\1/'
! "$copy/docs/log-messages" --check 2>"$work/errors" || fail "an error without advice is not missed"
expect errors "an error that says nothing to do: device can't close"
