#!/usr/bin/env bash
# usage: merge-shards.sh [-n PICTURES] OUTPUT SHARD...
# Puts the files of results that `kormelin-segment --shard I/N` wrote, I from 1 to N, together to what a single run
# would have written, byte for byte: JSON lines or CSV, whichever they hold. The order of the N names does not matter.
# Nothing is written if a shard is missing, short, cut off or of another list; whether the end of the whole list is
# there can be told only with -n, the number of pictures in it.
# Exit codes: that of the single run, 0, 1, 3 or 4, by the outcomes of its pictures; 2 for wrong usage; 4, without
# OUTPUT, if there is anything else wrong.
set -euo pipefail

usage()
{
    [ $# -eq 0 ] || printf 'merge-shards: %s\n' "$1" >&2
    sed -n 's/^# usage: /usage: /p' "$0" >&2
    exit 2
}
refuse()
{
    printf 'merge-shards: %s\n' "$1" >&2
    exit 4
}

pictures=
while getopts n: option; do
    case $option in
        n) pictures=$OPTARG ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
[[ $# -ge 2 && $1 && $pictures =~ ^[0-9]{0,15}$ ]] || usage
output=$1
shift
for file; do
    [ -f "$file" ] || refuse "$file is missing"
    [ -r "$file" ] || refuse "$file cannot be read"
    [ ! -s "$file" ] || [ -z "$(tail -c 1 -- "$file" | tr -d '\n')" ] ||
        refuse "$file ends within a line: resume its shard"
    [ ! "$file" -ef "$output" ] || usage "$file is to be both read and written"
done
[ ! -e "$output" ] || [ -f "$output" ] || usage "$output is no file"
ulimit -Sn "$(ulimit -Hn)" || true # all files are open at a time

# Ends with 10 and the code of the single run, with 4 after a message of its own.
merge='
    function refuse(text)
    {
        printf "merge-shards: %s\n", text >"/dev/stderr"
        exit 4
    }

    # The next line of file f, in the variable row. False at its end.
    function read_line(f,    got)
    {
        got = (getline row < file[f])
        if (got < 0) refuse("cannot read " file[f])
        return got
    }

    # The next row of file f, whose fields in quotation marks may hold line ends.
    function read_row(f,    all, between)
    {
        for (all = ""; read_line(f); between = "\n")
        {
            all = all between row
            quotes += gsub(/"/, "&", row)
            if (quotes % 2 == 0)
            {
                row = all
                return 1
            }
        }
        if (quotes % 2 != 0) refuse(file[f] " ends within a row: resume its shard")
        return 0
    }

    # The fields of a row up to the number of fingers, in the array field.
    function split_row(text,    i)
    {
        if (index(text, "\"") == 0) return split(text, field, ",")
        for (i = 1; i <= 13; ++i)
        {
            if (!match(text, /^"([^"]|"")*",/) && !match(text, /^[^,]*,/)) return i - 1
            field[i] = substr(text, 1, RLENGTH - 1)
            text = substr(text, RLENGTH + 1)
        }
        return i - 1
    }

    function is_number(text) { return text ~ /^[0-9]+$/ }

    # The next picture of file f: its bytes in text[f], its place in the list in place[f]. False at the end.
    function read_json(f)
    {
        if (!read_line(f)) return 0
        if (!match(row, /^\{"schema_version":[0-9]+,"index":[0-9]+,/) || substr(row, length(row)) != "}")
            refuse(file[f] " holds no results: " substr(row, 1, 60))
        place[f] = substr(row, 1, RLENGTH - 1)
        sub(/.*:/, "", place[f])
        text[f] = row "\n"
        # Quotation marks within a text have a backslash.
        if (!match(row, /,"outcome":"[a-z_]+"/)) refuse(file[f] " tells no outcome of picture " place[f])
        outcome[f] = substr(row, RSTART + 12, RLENGTH - 13)
        return 1
    }

    function read_csv(f,    finger)
    {
        text[f] = ""
        for (finger = 1;; ++finger)
        {
            quotes = 0
            if (!read_row(f))
            {
                if (finger > 1) refuse(file[f] " ends within picture " place[f] ": resume its shard")
                return 0
            }
            if (split_row(row) < 13 || !is_number(field[1]) || !is_number(field[13]))
                refuse(file[f] " holds no results: " substr(row, 1, 60))
            if ((finger > 1 && field[1] != place[f]) || (field[13] > 0 && field[12] != finger))
                refuse(file[f] ": the fingers of picture " field[1] " are mixed up")
            place[f] = field[1]
            outcome[f] = field[3]
            text[f] = text[f] row "\n"
            if (finger >= field[13] + 0) return 1
        }
    }

    function read_picture(f) { return csv ? read_csv(f) : read_json(f) }

    # The form of all files, by the first that is not empty.
    function read_headers(    f, got)
    {
        for (f = 1; f <= shards && !got; ++f)
        {
            got = read_line(f)
            close(file[f])
        }
        csv = got && row ~ /^index,input,outcome,/
        if (!csv) return
        header = row "\n"
        for (f = 1; f <= shards; ++f)
        {
            if (!read_line(f)) refuse(file[f] " is empty: resume its shard")
            if (row "\n" != header) refuse(file[f] " holds something else than the other files: " substr(row, 1, 60))
        }
        printf "%s", header
    }

    # Which file holds which shard: its first picture tells. A list shorter than that leaves the last ones empty.
    function find_shards(    f)
    {
        for (f = 1; f <= shards; ++f)
        {
            if (!(there[f] = read_picture(f))) continue
            if (place[f] < 1 || place[f] + 0 > shards)
                refuse(file[f] " begins with picture " place[f] ", but there are only " shards \
                    " files: a shard is missing")
            if (place[f] in file_of) refuse(file[f] " and " file[file_of[place[f]]] " are the same shard")
            file_of[place[f] + 0] = f
        }
    }

    function merge(    f, shard)
    {
        for (total = 1;; ++total)
        {
            shard = (total - 1) % shards + 1
            f = file_of[shard]
            if (!f || !there[f]) break
            if (place[f] + 0 != total)
                refuse(file[f] ": picture " place[f] " stands where " sprintf("%.0f", total) " belongs")
            if (!(outcome[f] in exit_of)) refuse(file[f] ": picture " place[f] " has no known outcome")
            if (exit_of[outcome[f]] > worst) worst = exit_of[outcome[f]]
            printf "%s", text[f]
            there[f] = read_picture(f)
        }
        --total
        for (f = 1; f <= shards; ++f)
        {
            if (there[f])
                refuse("picture " sprintf("%.0f", total + 1) " is missing: shard " shard "/" shards \
                    (file_of[shard] ? ", " file[file_of[shard]] "," : "") " is missing or short")
        }
        if (pictures != "" && total != pictures + 0)
            refuse(sprintf("the files hold %.0f pictures instead of %.0f: they are short, or of another list",
                total, pictures))
    }

    BEGIN {
        split("segmented 0 too_few 1 no_finger 1 unreadable 3 not_written 3 failed 4", words, " ")
        for (i = 1; i in words; i += 2) exit_of[words[i]] = words[i + 1]
        shards = ARGC - 1
        for (i = 1; i <= shards; ++i) {
            file[i] = ARGV[i] ~ /^\// ? ARGV[i] : "./" ARGV[i]
            if (file[i] in named) refuse(file[i] " and " file[i] " are the same shard")
            named[file[i]] = i
        }
        read_headers()
        find_shards()
        merge()
        exit 10 + worst
    }'

part=$output.part$$
trap 'rm -f -- "$part"' EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM
status=0
LC_ALL=C awk -v pictures="$pictures" "$merge" "$@" >"$part" || status=$?
case $status in
    10 | 11 | 13 | 14) ;;
    4) exit 4 ;;
    *) refuse "cannot write $part" ;;
esac
# Some awks do not mind a full disk. All bytes of all files are there, but for the headers of all files but one.
bytes=$(($(stat -Lc %s -- "$@" | paste -s -d +)))
if [ "$(head -c 6 -- "$1")" = index, ]; then
    bytes=$((bytes - ($# - 1) * $(head -n 1 -- "$1" | wc -c)))
fi
[ "$(stat -c %s -- "$part")" -eq "$bytes" ] || refuse "cannot write all of $part"
mv -fT -- "$part" "$output" || exit 4
exit $((status - 10))
