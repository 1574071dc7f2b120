# Shared by the tests that run kormelin-segment. Source it with the paths of the program and of make-slap in $program and
# $make_slap; it goes to $folder, which is removed at the end.

export LC_ALL=C # names are bytes

# The test runs in a process of its own, and this one clears up. A trap would do so, too, but also in a child that is
# killed before it has become another program.
if [ -z "${KORMELIN_TEST_FOLDER:-}" ]; then
    KORMELIN_TEST_FOLDER=$(mktemp -d)
    export KORMELIN_TEST_FOLDER
    test_status=0
    "$0" "$@" || test_status=$?
    chmod -R u+rwx "$KORMELIN_TEST_FOLDER"
    rm -rf "$KORMELIN_TEST_FOLDER"
    exit "$test_status"
fi
folder=$KORMELIN_TEST_FOLDER
"$program" --version | grep PNG >/dev/null || exit 77 # the usual form of the fingers
cd "$folder"

fail()
{
    echo "$*"
    exit 1
}

# run STATUS ARGUMENT...: the program must end with this status; what it prints is in the files out and errors, and in
# the variables of these names, without the zero bytes that a text may hold.
run()
{
    local expected=$1 status=0
    shift
    "$program" "$@" >out 2>errors </dev/null || status=$?
    out=$(tr -d '\0' <out)
    errors=$(tr -d '\0' <errors)
    [ "$status" -eq "$expected" ] || fail "kormelin-segment $* ended with $status, not $expected: $out $errors"
}

# says WHAT TEXT: the errors must hold the text.
says()
{
    [[ $errors == *"$2"* ]] || fail "$1: not \"$2\" but: $errors"
}

# prints WHAT TEXT: the results must hold the text.
prints()
{
    [[ $out == *"$2"* ]] || fail "$1: not \"$2\" but: $out"
}

# draw SCENE FILE [PELS]: a picture of known fingers.
draw()
{
    "$make_slap" "$1" "${3:-19685}" "$2" >/dev/null
}

# bmp_to_pgm BMP PGM: the pixels of a picture of make-slap, which tells no resolution then.
bmp_to_pgm()
{
    perl -e 'undef $/; binmode STDIN; binmode STDOUT; $bmp = <STDIN>;
        ($width, $height) = unpack "V2", substr $bmp, 18, 8;
        print "P5\n$width $height\n255\n";
        $stride = ($width + 3) & ~3;
        print substr $bmp, 1078 + $stride * $_, $width for reverse 0 .. $height - 1' <"$1" >"$2"
}
