#!/usr/bin/env bash
# Checks the models of what crosses threads, Tests/Models, with Spin: each property of each model holds, and each error that
# can be planted in it is found. Takes a minute or two on one processor core, and a gigabyte of memory. Docs/models.md says
# what the models cover.
# Usage: models.sh [model ...]    by default all
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh models

folder=$PWD/Tests/Models
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
states=0 properties=0 planted=0 found=0 faults=0

fail() {
	echo "$1" >&2
	faults=$((faults + 1))
}

# Builds the verifier of a model. Arguments: model, safety or the name of an LTL formula, optimization, then definitions.
build() {
	local model=$1 property=$2 optimization=$3
	shift 3
	local options=(-DNOCLAIM -DSAFETY)
	[ "$property" = safety ] || options=(-DNFAIR=3)
	(cd "$work" && rm -f pan* && spin -a "$@" "$folder/$model.pml" > spin.log 2>&1 &&
		gcc "$optimization" -w -DVECTORSZ=2048 "${options[@]}" -o pan pan.c) || {
		cat "$work/spin.log" >&2
		return 1
	}
}

# Runs it, and puts what it says into $work/pan.log. Weak fairness: a thread that can go on does so.
run() {
	local options=(-m300000 -w22)
	[ "$1" = safety ] || options+=(-a -f -N "$1")
	(cd "$work" && ./pan "${options[@]}" > pan.log 2>&1) || true
}

count_errors() { sed -n 's/.*errors: \([0-9]*\).*/\1/p' "$work/pan.log"; }
count_states() { sed -n 's/^ *\([0-9]*\) states, stored.*/\1/p' "$work/pan.log"; }
is_whole() { ! grep -qE "max search depth too small|out of memory|Search not completed|VECTORSZ" "$work/pan.log"; }

check_property() {
	local model=$1 property=$2
	build "$model" "$property" -O2 && run "$property" || {
		fail "$model: $property cannot be checked"
		return
	}
	local visited
	visited=$(count_states)
	if [ "$(count_errors)" = 0 ] && is_whole; then
		printf '%-20s %-34s %9d states\n' "$model" "$property" "$visited"
		properties=$((properties + 1))
		states=$((states + visited))
	else
		cat "$work/pan.log" >&2
		fail "$model: $property does not hold, or the search was not completed"
	fi
}

check_plant() {
	local model=$1 plant=$2 property=$3 what=$4
	planted=$((planted + 1))
	# Most are found soon, so that the compiler takes more time than the search.
	build "$model" "$property" -O0 "-D$plant" && run "$property" || {
		fail "$model: $plant cannot be checked"
		return
	}
	if [ "$(count_errors)" = 1 ]; then
		found=$((found + 1))
		printf '%-20s %-34s found: %s\n' "$model" "$plant" "$what"
	else
		fail "$model: nothing finds $plant: $what"
	fi
}

check_model() {
	local model=$1 kind name property what
	while read -r _ kind name property what; do
		case $kind in
		safety) check_property "$model" safety ;;
		ltl) check_property "$model" "$name" ;;
		plant) check_plant "$model" "$name" "${property#ltl:}" "$what" ;;
		*) fail "$model: what is \"//: $kind\"?" ;;
		esac
	done < <(grep '^//:' "$folder/$model.pml")
}

models=("$@")
[ ${#models[@]} -gt 0 ] || models=($(cd "$folder" && ls -- *.pml | sed 's/\.pml$//'))
for model in "${models[@]}"; do
	check_model "$model"
done
echo "${#models[@]} models: $properties properties hold in $states states, $found of $planted planted errors found, $faults faults"
[ "$faults" -eq 0 ]
