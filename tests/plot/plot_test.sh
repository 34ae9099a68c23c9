#!/usr/bin/env bash
# plot_test.sh PLOT_FIELD: pictures of a line and a plane are drawn, other tables refused in words.
set -euo pipefail

plot_field=$1
/usr/bin/python3 -c 'import matplotlib' 2>/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# table NAME AWK_POINTS: a row for each "x y z" that the program prints, of a charge at (0, 0, 2).
table() {
  awk "BEGIN { OFMT = \"%.17g\"; $2 }" | awk '
    BEGIN { print "X,Y,Z,Potential,EFieldX,EFieldY,EFieldZ" }
    { d = $3 - 2; r = sqrt($1 * $1 + $2 * $2 + d * d)
      printf "%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g\n",
             $1, $2, $3, 1 / r, -$1 / r^3, -$2 / r^3, -d / r^3 }' >"$1.csv"
}

# draws WIDTH_ABOVE_HEIGHT TABLE [OPTION]: a PNG whose header tells a picture of this shape.
draws() {
  "$plot_field" "$2.csv" ${3:-} >/dev/null
  read -r signature width height <<<"$(od -An -t x1 -N 24 -v "$2.png" | tr -d '\n ' |
    sed -E 's/^(.{16}).{16}(.{8})(.{8})$/\1 \2 \3/')"
  [ "$signature" = 89504e470d0a1a0a ] || { echo "$2.png is no PNG: $signature"; exit 1; }
  [ $((16#$width > 16#$height)) = "$1" ] || { echo "$2.png is $width by $height"; exit 1; }
}

# refuses WORDS TABLE
refuses() {
  local output
  if output=$("$plot_field" "$2.csv" 2>&1); then echo "$2.csv is not refused"; exit 1; fi
  [[ $output == *"$1"* ]] || { echo "$2.csv: $output"; exit 1; }
}

# Curves stand above each other, maps beside each other.
table line 'for (i = 0; i < 20; ++i) print i / 10, 0, 1'
draws 0 line
table oblique 'for (i = 0; i < 20; ++i) print i, 2 * i, -i'
draws 0 oblique --log
table lattice 'for (i = 0; i < 6; ++i) for (j = 0; j < 4; ++j) print i, j, 0.5'
draws 1 lattice
table scattered 'srand(1); for (i = 0; i < 60; ++i) print rand(), 1, rand()'
draws 1 scattered

table tilted 'srand(1); for (i = 0; i < 9; ++i) { x = rand(); y = rand(); print x, y, x + y }'
refuses 'a plane that is not parallel to two axes' tilted
table spread 'srand(1); for (i = 0; i < 9; ++i) print rand(), rand(), rand()'
refuses 'lie neither on a line nor on a plane' spread
table empty ''
refuses 'has no rows' empty
echo '1,2,3' >other.csv
refuses 'is no result table' other
