#!/usr/bin/env bash
# Renders a timeline on a Slurm cluster: a plan, an array job with a task for each piece, and a job that joins them.
#
# Usage: slurm-farm.sh TIMELINE OUTPUT PIECES [OPTION ...]
#
# Options are those of "sonaro plan", such as --normalize -16. All nodes reach the timeline, its media and the folder of
# OUTPUT by the same paths. The environment variable SONARO names the program (default: sonaro). The script returns when
# the output is written, with 3 where media are missing and silent, and fails where a piece did. Pieces that are there
# already are not rendered again, but for those that the join calls damaged: after a node failed, run it once more.
set -euo pipefail

if [ $# -lt 3 ]; then
	echo "Usage: slurm-farm.sh TIMELINE OUTPUT PIECES [OPTION ...]" >&2
	exit 2
fi
sonaro=${SONARO:-sonaro}
timeline=$(realpath "$1")
output=$(realpath "$2")
count=$3
shift 3
work=$output.pieces
mkdir -p "$work"

# A plan of the same timeline and options has the same bytes, so that pieces of an earlier run stay valid. The output is
# checked now, as its name may be one that the join could not write.
code=0
"$sonaro" plan "$timeline" --pieces "$count" -o "$work/plan.new" --join-output "$output" "$@" || code=$?
# 3: media are missing, and silent.
if [ "$code" != 0 ] && [ "$code" != 3 ]; then
	rmdir "$work" 2> /dev/null || true
	exit "$code"
fi
if ! cmp -s "$work/plan.new" "$work/plan.json"; then
	rm -f "$work"/piece*.wav
fi
mv "$work/plan.new" "$work/plan.json"
count=$(grep -c '"piece":' "$work/plan.json")

cat > "$work/piece.sh" <<SCRIPT
#!/usr/bin/env bash
n=\$SLURM_ARRAY_TASK_ID
[ -e "$work/piece\$n.wav" ] && exit 0
exec "$sonaro" render --piece "$work/plan.json#\$n" -o "$work/piece\$n.wav" --jobs "\${SLURM_CPUS_PER_TASK:-1}" --quiet
SCRIPT
cat > "$work/join.sh" <<SCRIPT
#!/usr/bin/env bash
exec "$sonaro" join "$work/plan.json" -o "$output" --pieces-in "$work"
SCRIPT

array=$(sbatch --parsable --array="1-$count" --output="$work/piece-%a.log" "$work/piece.sh")
# It ends with the code of the job.
code=0
sbatch --wait --dependency="afterany:${array%%;*}" --output="$work/join.log" "$work/join.sh" > "$work/sbatch.log" ||
	code=$?
if [ "$code" != 0 ] && [ "$code" != 3 ]; then
	cat "$work"/join.log >&2
	for piece in "$work"/piece*.wav; do
		if grep -qF "${piece##*/}': is a piece that is" "$work/join.log"; then
			rm -f "$piece"
		fi
	done
	exit 1
fi
cat "$work/join.log"
rm -r "$work"
exit "$code"
