#!/usr/bin/env bash
# usage: PublicHeader.sh CC CXX INCLUDE_FOLDER [README.md]
# Every public header stands alone, included twice, without one warning: *.h in C99 and C++, *.hpp in C++. The C example
# of the read-me compiles with them.
set -euo pipefail
cc=$1
cxx=$2
folder=$3
shopt -s nullglob

headers=("$folder"/*.h)
if [ ${#headers[@]} -eq 0 ]; then
    echo "no public header in $folder"
    exit 1
fi
# in_c and in_cpp STANDARD: whether the source on the standard input compiles without a warning.
in_c()
{
    "$cc" -std=c99 -pedantic -Wall -Wextra -Wstrict-prototypes -Werror -fsyntax-only -I"$folder" -x c -
}
in_cpp()
{
    "$cxx" -std="$1" -pedantic -Wall -Wextra -Wconversion -Wshadow -Werror -fsyntax-only -I"$folder" -x c++ -
}

for header in "${headers[@]}"; do
    name=${header##*/}
    source=$(printf '#include <%s>\n#include <%s>\nint unit_is_not_empty(void);\n' "$name" "$name")
    in_c <<<"$source"
    for standard in c++11 c++17; do
        in_cpp $standard <<<"$source"
    done
    # The same with what either language does not have is refused, so the compilers do look.
    while IFS= read -r foreign; do
        if in_c <<<"$source$foreign" 2>/dev/null; then
            echo "passes as C99: $foreign"
            exit 1
        fi
    done <<'END'
void with_default(int n = 0);
struct with_nameless_part { struct { int n; }; };
void without_prototype();
enum with_base : int { value_of_base };
bool without_header(void);
int aEmpty[0];
END
    while IFS= read -r foreign; do
        if in_cpp c++11 <<<"$source$foreign" 2>/dev/null; then
            echo "passes as C++11: $foreign"
            exit 1
        fi
    done <<'END'
int class;
void with_restrict(int* restrict p);
int aEmpty[0];
END
    echo "$name compiles as C99, C++11 and C++17"
done
for header in "$folder"/*.hpp; do
    name=${header##*/}
    source=$(printf '#include <%s>\n#include <%s>\n' "$name" "$name")
    for standard in c++17 c++20; do
        in_cpp $standard <<<"$source"
    done
    echo "$name compiles as C++17 and C++20"
done
if [ $# -gt 3 ]; then
    example=$(sed -n '/^```c$/,/^```$/{/^```/d;p}' "$4")
    grep -q '#include' <<<"$example"
    "$cc" -std=c99 -pedantic -Wall -Wextra -Werror -fsyntax-only -I"$folder" -x c - <<<"$example"
    echo "the example of ${4##*/} compiles"
fi
