#!/usr/bin/env bash
# cluster_test.sh SCRIPTS PROGRAM MAKE_SAMPLE: the scripts of examples/cluster against their promises.
set -euo pipefail

/usr/bin/python3 -c 'import numpy' || exit 77
scripts=$1
program=$2
make_sample=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

# expect NAME GOT WANTED
expect() {
  [ "$2" = "$3" ] && return
  printf 'FAILED %s\n  wanted: %s\n  got:    %s\n' "$1" "$3" "$2"
  failures=$((failures + 1))
}

# refuses WORDS COMMAND...: the command fails and says so in these words.
refuses() {
  local words=$1 output
  shift
  if output=$("$@" 2>&1); then
    printf 'FAILED not refused: %s\n' "$*"
  elif [[ $output != *"$words"* ]]; then
    printf 'FAILED %s\n  wanted: %s\n  got:    %s\n' "$*" "$words" "$output"
  else
    return 0
  fi
  failures=$((failures + 1))
}

evaluate() { "$program" -i sample.vtkhdf -s sample.yaml -p "$1" >/dev/null; }

splits_as_the_program_reads() {
  # Comments, text behind the numbers, numbers over several lines, carriage returns, and an end
  # without line end.
  printf '%s\n' '# head' '' '5 points' '# first' '1 2 3 # with a note' '4' '5 6;' '' '#' \
    $'-.5\t+1e-3  7.' $'8 9 10\r' >odd.xyz
  printf '11 12 13' >>odd.xyz
  "$scripts/split_points" odd.xyz 2
  expect 'first slice' "$(cat odd.0001.xyz)" $'3\n1 2 3\n-.5 +1e-3 7.\n4 5 6'
  expect 'second slice' "$(cat odd.0002.xyz)" $'2\n8 9 10\n11 12 13'

  evaluate odd.xyz
  mv odd.csv whole.csv
  for i in 1 2; do evaluate odd.000$i.xyz; done
  "$scripts/merge_tables" odd.xyz 2 >/dev/null
  expect 'coordinates of the whole run' "$(cut -d, -f1-3 odd.csv)" "$(cut -d, -f1-3 whole.csv)"

  touch odd.0002.log
  refuses 'odd.0001.xyz is left from an earlier split' "$scripts/split_points" odd.xyz 5
  for n in 1 3 5; do
    "$scripts/split_points" --force odd.xyz "$n"
    expect "$n slices" "$(ls odd.0*)" "$(printf 'odd.%04d.xyz\n' $(seq "$n"))"
    expect "points of $n slices" "$(for s in odd.0*.xyz; do tail -n +2 "$s"; done)" \
      $'1 2 3\n-.5 +1e-3 7.\n4 5 6\n8 9 10\n11 12 13'
  done
}

slices_are_compact_and_put_back() {
  # A grid of 4 x 4 x 4 points in mixed order, the first one twice: stretches of an eighth of the
  # curve are the eight smaller cubes.
  {
    echo 65
    for k in $(seq 0 63); do
      i=$((k * 37 % 64))
      echo "$((i % 4)) $((i / 4 % 4)) $((i / 16))"
    done
    echo '0 0 0'
  } >cube.xyz
  "$scripts/split_points" cube.xyz 8
  expect 'cubes' "$(for s in cube.0*.xyz; do
    tail -n +2 "$s" | awk '{ print int($1 / 2) int($2 / 2) int($3 / 2) }' | sort | uniq -c | xargs
  done)" "$(printf '%s\n' '9 000' '8 100' '8 010' '8 110' '8 001' '8 101' '8 011' '8 111')"
  expect 'rows of the order' "$(while read -r k; do sed -n "$((k + 1))p" cube.xyz; done <cube.order)" \
    "$(tail -qn +2 cube.0*.xyz)"
  expect 'equal points' "$(head -n 2 cube.order | xargs)" '1 65'

  for i in $(seq 8); do evaluate cube.000$i.xyz; done
  "$scripts/merge_tables" cube.xyz 8 >/dev/null
  expect 'points in the order of the list' \
    "$(tail -n +2 cube.csv | awk -F, '{ print $1 + 0, $2 + 0, $3 + 0 }')" "$(tail -n +2 cube.xyz)"
  expect 'rows' "$(tail -n +2 cube.csv | sort)" "$(tail -qn +2 cube.0*.csv | sort)"
}

refuses_bad_points() {
  # words | slices | text of the points file
  while IFS='|' read -r words slices text; do
    printf "$text" >bad.xyz
    refuses "$words" "$scripts/split_points" bad.xyz "$slices"
    expect "slices left of '$text'" "$(compgen -G 'bad.0*' || true)" ''
  done <<'END'
has 2 points, its first number says 3|2|3\n1 2 3\n4 5 6\n
has 1 points, its first number says 2|1|2\n1 2 3\n4 5\n
line 2: expected a number, got x|1|1\n1 x 3\n
line 2: expected a number, got 2,|1|1\n1 2, 3\n
line 3: expected a number, got #|1|1\n1 2\n# 3\n
expected the number of points, got 1.5|1|1.5 2 3\n
2 points are too few for 3 slices|3|2\n1 2 3\n4 5 6\n
no number of points found|1|# nothing\n
point 2 is out of the range of numbers: 1e400 2 3|1|2\n1 2 3\n1e400 2 3\n
must lie in 1 to 9999, not 0|0|1\n1 2 3\n
END
  printf '1\n1 2 3\n4 5 6\n' >long.xyz
  expect 'word about more points' "$("$scripts/split_points" long.xyz 1 2>&1)" \
    "split_points: long.xyz, text behind point 1 is ignored"
  refuses 'is a mesh' "$scripts/split_points" "$(touch p.mesh && echo p.mesh)" 1
}

refuses_names_with_blanks() {
  mkdir 'my data'
  cp sample.* 'my data'
  local words='has a blank: orvanta.post reads a name up to its first blank'
  refuses "$words" "$scripts/split_points" 'my data/sample.xyz' 2
  refuses "$words" env SLURM_ARRAY_TASK_ID=1 bash "$scripts/slurm_array.sbatch" \
    'my data/sample.vtkhdf' sample.xyz sample.yaml
  command -v parallel >/dev/null || return 0
  refuses "$words" "$scripts/run_parallel" --program="$program" --input=sample.vtkhdf \
    --points=sample.xyz --settings='my data/sample.yaml' --slices=2
  expect 'slices left' "$(compgen -G 'sample.0*' || true)" ''
}

merges_only_whole_sets() {
  printf '4\n1 2 3\n4 5 6\n7 8 9\n0.1 0.2 1.7\n' >set.xyz
  "$scripts/split_points" set.xyz 2
  for i in 1 2; do evaluate set.000$i.xyz; done
  cp set.0002.csv good.csv
  spoilt() { refuses "$1" "$scripts/merge_tables" set.xyz 2; cp good.csv set.0002.csv; }

  rm set.0002.csv
  spoilt 'table set.0002.csv is missing'
  : >set.0002.csv
  spoilt 'set.0002.csv: empty'
  sed -i '$d' set.0002.csv
  spoilt '1 rows for the 2 points'
  sed -i '$p' set.0002.csv
  spoilt 'more rows than the 2 points'
  sed -i 1d set.0002.csv
  spoilt 'unknown head line'
  truncate -s -1 set.0002.csv
  spoilt 'its last row is cut off'
  sed -i 's/,[^,]*$//' set.0002.csv
  spoilt 'unknown head line'
  sed -i '3s/,[^,]*$//' set.0002.csv
  spoilt 'row 2 has not 7 columns'
  sed -i '2{h;d};3G' set.0002.csv
  spoilt 'row 1 belongs to another point'
  cp set.0001.csv set.0002.csv
  spoilt 'row 1 belongs to another point'
  refuses '1 slices have 2 points' "$scripts/merge_tables" set.xyz 1
  refuses 'slice set.0003.xyz is missing' "$scripts/merge_tables" set.xyz 3
  cp set.order good.order
  sed -i '2s/.*/4/' set.order
  refuses 'set.order does not hold each number from 1 to 4 once' "$scripts/merge_tables" set.xyz 2
  rm set.order
  refuses 'set.order is missing' "$scripts/merge_tables" set.xyz 2
  mv good.order set.order
  expect 'no table after refusals' "$(compgen -G 'set.csv*' || true)" ''

  "$scripts/merge_tables" --output=t.csv set.xyz 2 >/dev/null
  expect 'merged rows' "$(tail -n +2 t.csv | sort)" "$(tail -qn +2 set.000[12].csv | sort)"
}

slices_agree_with_the_whole() {
  evaluate sample.xyz
  mv sample.csv whole.csv
  "$scripts/split_points" sample.xyz 3
  for i in 1 2 3; do
    SLURM_ARRAY_TASK_ID=$i ORVANTA_POST=$program \
      bash "$scripts/slurm_array.sbatch" sample.vtkhdf sample.xyz sample.yaml >/dev/null
  done
  "$scripts/merge_tables" sample.xyz 3 >/dev/null
  "$scripts/compare_tables" --within=3e-4 whole.csv sample.csv || failures=$((failures + 1))
  refuses 'differs by more than' "$scripts/compare_tables" --within=1e-13 whole.csv sample.csv
  refuses 'slice ./sample.0004.xyz is missing' env SLURM_ARRAY_TASK_ID=4 \
    bash "$scripts/slurm_array.sbatch" sample.vtkhdf sample.xyz sample.yaml

  command -v parallel >/dev/null || { echo 'parallel is not installed: run_parallel not tried'; return; }
  mv sample.csv task_by_task.csv
  local run=("$scripts/run_parallel" --program="$program" --input=sample.vtkhdf
             --points=sample.xyz --settings=sample.yaml --jobs=2)
  "${run[@]}" --slices=3 >/dev/null
  expect 'table of run_parallel' "$(cmp sample.csv task_by_task.csv 2>&1)" ''
  sed -i 's/degree: 8/degree: 2/' sample.yaml
  refuses 'a slice failed' "${run[@]}" --slices=3 --output=never.csv
  expect 'no table after a failure' "$(compgen -G 'never.csv*' || true)" ''
}

"$make_sample" --refine=8 --count=1000 --degree=8 --leaf-size=50 --threads=1 --out="$work/sample" >/dev/null
splits_as_the_program_reads
slices_are_compact_and_put_back
refuses_bad_points
refuses_names_with_blanks
merges_only_whole_sets
slices_agree_with_the_whole
[ "$failures" -eq 0 ] || { echo "$failures failed"; exit 1; }
