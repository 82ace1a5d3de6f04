#!/usr/bin/env bash
# Runs Examples/Cluster/slurm-farm.sh on a Slurm of one node, which it starts for that, and compares the file with that of
# one render; then once more with a piece that is missing. Says so and ends with 0 where slurm-wlm is not installed.
#
# Usage: try-slurm.sh [PROGRAM]     as root, without a Slurm that runs already
set -euo pipefail
cd "$(dirname "$0")/.."
program=$(realpath "${1:-build/release/Host/sonaro}")

for needed in slurmctld slurmd munged sbatch; do
	if ! command -v "$needed" > /dev/null && [ ! -x "/usr/sbin/$needed" ]; then
		echo "try-slurm.sh is left out: $needed is missing; install slurm-wlm"
		exit 0
	fi
done
PATH=$PATH:/usr/sbin
work=$(mktemp -d)
processes=()
finish() {
	for process in "${processes[@]}"; do
		kill "$process" 2> /dev/null || true
	done
	wait || true
	rm -rf "$work"
}
trap finish EXIT

# Keys, sockets and states of its own, so that nothing of the system's changes.
head -c 1024 /dev/urandom > "$work/munge.key"
chmod 400 "$work/munge.key"
chmod 755 "$work"
munged --foreground --force --key-file="$work/munge.key" --socket="$work/munge.socket" --pid-file="$work/munge.pid" \
	--log-file="$work/munge.log" --seed-file="$work/munge.seed" > "$work/munged.log" 2>&1 &
processes+=($!)
mkdir "$work/state" "$work/spool" "$work/media"
node=$(hostname -s)
cat > "$work/slurm.conf" <<CONF
ClusterName=one
SlurmctldHost=$node(127.0.0.1)
SlurmctldPort=16817
SlurmdPort=16818
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket=$work/munge.socket
CredType=cred/munge
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
MailProg=/bin/true
ReturnToService=2
NodeName=$node NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
CONF
version=$([ -e /sys/fs/cgroup/cgroup.controllers ] && echo v2 || echo v1)
echo "CgroupPlugin=cgroup/$version" > "$work/cgroup.conf"
export SLURM_CONF=$work/slurm.conf
sleep 1
slurmctld -D -f "$SLURM_CONF" > "$work/slurmctld.log" 2>&1 &
processes+=($!)
slurmd -D -f "$SLURM_CONF" -N "$node" > "$work/slurmd.log" 2>&1 &
processes+=($!)
for _ in $(seq 60); do
	state=$(sinfo -h -o %T 2> /dev/null || true)
	[ "$state" = idle ] && break
	sleep 0.5
done
if [ "$state" != idle ]; then
	echo "the node does not come up: ${state:-no answer}" >&2
	tail -n 20 "$work"/*.log >&2
	exit 1
fi

python3 Scripts/make-long-timeline.py "$work/media" --tracks 4 --seconds 60 --files 2
edit=$work/media/edit.otio
options=(--normalize -20 --limit-dbtp -3 --bits 16)
"$program" render "$edit" -o "$work/one.wav" --quiet "${options[@]}"
begin=$(date +%s)
SONARO=$program Examples/Cluster/slurm-farm.sh "$edit" "$work/mix.wav" 6 "${options[@]}"
cmp "$work/one.wav" "$work/mix.wav"
[ ! -e "$work/mix.wav.pieces" ]
seconds=$(($(date +%s) - begin))

# A node that loses pieces: the join names them, and another run renders what is missing.
cat > "$work/failing" <<FAILING
#!/usr/bin/env bash
[ "\${SLURM_ARRAY_TASK_ID:-}" = 3 ] && kill -9 \$\$
exec "$program" "\$@"
FAILING
chmod +x "$work/failing"
if SONARO=$work/failing Examples/Cluster/slurm-farm.sh "$edit" "$work/again.wav" 6 "${options[@]}" 2> "$work/errors"; then
	echo "a lost piece went unnoticed" >&2
	exit 1
fi
grep -q "piece 3 of 6 is missing" "$work/errors"
# Another piece is damaged meanwhile: the join names it, and the next run renders it again.
printf x | dd of="$work/again.wav.pieces/piece1.wav" bs=1 seek=20000 conv=notrunc status=none
if SONARO=$program Examples/Cluster/slurm-farm.sh "$edit" "$work/again.wav" 6 "${options[@]}" 2> "$work/errors"; then
	echo "a damaged piece went unnoticed" >&2
	exit 1
fi
grep -q "piece1.wav': is a piece that is damaged" "$work/errors"
SONARO=$program Examples/Cluster/slurm-farm.sh "$edit" "$work/again.wav" 6 "${options[@]}"
cmp "$work/one.wav" "$work/again.wav"

# Missing media are silent, and the exit code says so.
sed 's/"target_url": "[^"]*"/"target_url": "nowhere.wav"/2' "$edit" > "$work/media/lacking.otio"
code=0
SONARO=$program Examples/Cluster/slurm-farm.sh "$work/media/lacking.otio" "$work/lacking.wav" 2 || code=$?
[ "$code" = 3 ]
[ -e "$work/lacking.wav" ]
[ ! -e "$work/lacking.wav.pieces" ]
echo "an array job of 6 pieces and their join gave the bytes of one render in $seconds s; so did one after a lost and a damaged piece, which were named"
