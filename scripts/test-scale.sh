#!/usr/bin/env bash
# usage: test-scale.sh
# The scripts of contrib/ with the engines that they are for: 200 drawn pictures, a cut-off and an empty one among them,
# as an array of 8 tasks of a one-node Slurm, and on two "machines" by GNU parallel over ssh. Undisturbed and with tasks
# that are requeued, killed and started again in the middle, results and pictures must be those of a single run, byte
# for byte. Slurm, munge and sshd are Debian's, with configuration, keys and state in a temporary folder and on free
# ports of the loopback interface; at the end, whatever it is, they are stopped and gone. Needs root. About two
# minutes.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
[ $# -eq 0 ] || { sed -n '2s/^# //p' "${BASH_SOURCE[0]}" >&2 && exit 2; }
[ "$(id -u)" -eq 0 ] || { echo "slurmd, slurmctld and sshd need root" >&2 && exit 1; }

pictures=200
shards=8
gate=100                                          # the picture that a run can be held at
gated_shard=$(((gate - 1) % shards + 1))          # the shard that it is in,
before_gate=$(((gate - gated_shard) / shards))    # and that shard's pictures in front of it
folder=$(mktemp -d)
chmod 755 "$folder" # the socket of munge must be within everyone's reach
machine=$(hostname -s)
made_for_sshd=
services_denied=

failure="ended early"
fail()
{
    failure=$*
    exit 1
}

# await SECONDS WHAT COMMAND...: until the command succeeds.
await()
{
    local end=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        [ $SECONDS -lt $end ] || fail "waited in vain for $what"
        sleep 0.1
    done
}

# Processes that work in the temporary folder, have a file of it open, or know it from their arguments or environment:
# all that were started here.
processes()
{
    {
        find /proc/[0-9]*/cwd /proc/[0-9]*/fd -maxdepth 1 -lname "$folder*" 2>/dev/null
        # It must not find itself.
        grep -laF -f - -- /proc/[0-9]*/cmdline /proc/[0-9]*/environ <<<"$folder" 2>/dev/null
    } | cut -d / -f 3 | sort -u
}
none_left()
{
    [ -z "$(processes)" ]
}

# --- what is started, and stopped in any case
daemons=()
# start NAME COMMAND...: in the background, with its messages in NAME.log.
start()
{
    local name=$1
    shift
    "$@" >"$folder/$name.log" 2>&1 </dev/null &
    daemons=($! "${daemons[@]}")
}
stop_all()
{
    local status=$? process
    trap - EXIT
    set +e
    cd /
    if [ "$status" -ne 0 ]; then
        tail -n 15 "$folder"/*.log "$folder"/run-*/*.out >&2
        echo "FAILED: $failure" >&2
    fi
    if [ -n "${SLURM_CONF:-}" ]; then
        timeout 20 scancel --user=root --signal=KILL --full
        for ((i = 0; i < 100; ++i)); do
            [ -n "$(timeout 5 squeue -h)" ] || break
            sleep 0.1
        done
    fi
    unset SLURM_CONF PARALLEL_SSH PARALLEL_HOME OLDPWD # by which those that look would be found
    [ ${#daemons[@]} -eq 0 ] || kill "${daemons[@]}" 2>/dev/null
    for ((i = 0; i < 100; ++i)); do
        none_left && break
        [ "$status" -eq 0 ] || kill $(processes) 2>/dev/null
        sleep 0.1
    done
    for process in $(processes); do
        echo "still there: $process $(tr '\0' ' ' <"/proc/$process/cmdline")" >&2
        kill -s KILL "$process"
        [ "$status" -ne 0 ] || status=1
    done
    wait
    [ -z "$services_denied" ] || rm -f /usr/sbin/policy-rc.d
    [ -z "$made_for_sshd" ] || rmdir /run/sshd
    rm -rf "$folder"
    [ "$status" -ne 0 ] || echo "everything is stopped and removed"
    exit "$status"
}
trap stop_all EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# --- Debian's packages, without their services
if [ ! -e /usr/sbin/policy-rc.d ]; then
    services_denied=1
    printf '#!/bin/sh\nexit 101\n' >/usr/sbin/policy-rc.d
    chmod 755 /usr/sbin/policy-rc.d
fi
install_missing "${build_packages[@]}" "${tool_packages[@]}" "${scale_packages[@]}"
say "Building"
configure_product "$@"
build release make-slap kormelin-segment
export KORMELIN_SEGMENT=$repository/build/release/tools/segment/kormelin-segment
contrib=$repository/contrib

say "Drawing $pictures pictures"
mkdir "$folder/pictures"
scenes=(four-fingers-right four-fingers-left three-fingers two-fingers one-finger two-flat-thumbs leaning-hand-left
    leaning-hand-right leaning-pair touching-fingers hand-with-palm pair-with-palm)
for ((number = 1; number <= pictures; ++number)); do
    printf '%s %d %s/pictures/%03d.bmp\n' "${scenes[number % ${#scenes[@]}]}" $((5000 + 50 * number)) \
        "$folder" "$number"
done | xargs -P "$jobs" -L 1 "$repository/build/release/make-slap" >"$folder/drawn"
head -c 100000 "$folder/pictures/077.bmp" >"$folder/cut"
mv "$folder/cut" "$folder/pictures/077.bmp"
: >"$folder/pictures/141.bmp"
[ "$(cksum "$folder"/pictures/* | cut -d ' ' -f 1 | sort -u | wc -l)" -eq "$pictures" ] || fail "pictures are alike"
# Only a decoder reads this one, and it waits as long as the file hold is there.
printf 'gate\n' >"$folder/pictures/$(printf %03d $gate).bmp"
decoder="echo \$PPID >'$folder/gate'; while [ -e '$folder/hold' ]; do sleep 0.1; done; printf 'P5 200 200 255\\n'; \
head -c 40000 /dev/zero"
options=(--expect 2 -o fingers --decoder "$decoder" --decoder-timeout 600)

# Each run has a folder of its own with the same names in it.
# enter NAME
enter()
{
    mkdir "$folder/run-$1"
    cd "$folder/run-$1"
    ln -s ../pictures pictures
    printf '%s\n' pictures/*.bmp >list
}
# shard_lines ENDING SHARD: how many lines of results that shard has.
shard_lines()
{
    wc -l <"shards/$2-of-$shards.$1"
}
stands_at_gate()
{
    [ -s "$folder/gate" ] && [ "$(shard_lines jsonl $gated_shard)" -eq "$before_gate" ]
}
hold()
{
    rm -f "$folder/gate"
    : >"$folder/hold"
}
gone()
{
    ! kill -0 "$1" 2>/dev/null
}
same_as_single()
{
    cmp "../run-single/results.$1" "${2:-results.$1}" || fail "the results are not those of the single run"
    diff -r ../run-single/fingers fingers || fail "the pictures are not those of the single run"
    [ -z "$(find . -name '*part*' -o -name '.*tmp*')" ] || fail "files are left: $(find .)"
    echo "$(wc -l <"../run-single/results.$1") lines and $(find fingers -type f | wc -l) pictures, as of the single run"
}

say "Single run"
enter single
for ending in jsonl csv; do
    status=0
    "$KORMELIN_SEGMENT" --files-from list --format ${ending/jsonl/json} --output results.$ending "${options[@]}" \
        2>messages || status=$?
    [ "$status" -eq 3 ] || fail "the single run ends with $status"
done
tail -n 1 messages
[ "$(wc -l <results.jsonl)" -eq "$pictures" ] || fail "other than $pictures results"
for number in 077 141 $gate; do
    grep -q "pictures/$number.bmp\",\"outcome\":\"unreadable\"" results.jsonl || fail "picture $number can be read"
done

# --- Slurm
# A port of the loopback interface that nothing listens on.
free_port()
{
    local port
    while :; do
        port=$((20000 + RANDOM % 12000))
        (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
    done
    echo $port
}

start_slurm()
{
    local slurm=$folder/slurm
    mkdir -p "$slurm/state" "$slurm/spool"
    (umask 077 && head -c 1024 /dev/urandom >"$slurm/munge.key")
    export SLURM_CONF=$slurm/slurm.conf
    cat >"$SLURM_CONF" <<END
ClusterName=scale
SlurmctldHost=$machine(127.0.0.1)
SlurmctldPort=$(free_port)
SlurmdPort=$(free_port)
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
# Requeued tasks wait for old credentials to run out.
AuthInfo=socket=$slurm/munge.socket,cred_expire=5
StateSaveLocation=$slurm/state
SlurmdSpoolDir=$slurm/spool
SlurmctldPidFile=$slurm/slurmctld.pid
SlurmdPidFile=$slurm/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
KillWait=5
MailProg=/bin/true
NodeName=$machine NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes=$machine Default=YES MaxTime=INFINITE State=UP
END
    echo "CgroupPlugin=cgroup/v1" >"$slurm/cgroup.conf" # is loaded, but nothing uses it
    start munged munged --foreground --force --num-threads=1 --key-file="$slurm/munge.key" \
        --socket="$slurm/munge.socket" --pid-file="$slurm/munge.pid" --seed-file="$slurm/munge.seed" \
        --log-file="$slurm/munge.log"
    await 20 munged test -S "$slurm/munge.socket"
    start slurmctld slurmctld -D -i
    start slurmd slurmd -D
    await 60 "an idle node" node_is_idle
}
node_is_idle()
{
    [[ $(sinfo -h -o %T 2>/dev/null) == idle ]]
}
# submit TASKS FORMAT: the number of the array job.
submit()
{
    sbatch --parsable --array="$1" --cpus-per-task=1 "$contrib/slurm-array.sh" -f "$2" $shards list shards \
        "${options[@]}"
}
has_ended()
{
    [ -z "$(squeue -h -j "$1" 2>/dev/null)" ]
}
# exit_codes JOB: what its tasks ended with, each one once.
exit_codes()
{
    scontrol -o show job "$1" | grep -o ' ExitCode=[0-9:]*' | sort -u | tr -d '\n'
}

say "Slurm: an array of $shards tasks"
start_slurm
sinfo --version
enter slurm
job=$(submit 1-$shards csv)
await 300 "the array" has_ended "$job"
[[ $(exit_codes "$job") =~ ^(\ ExitCode=[013]:0)+$ ]] || fail "the tasks end with $(exit_codes "$job")"
status=0
"$contrib/merge-shards.sh" -n $pictures results.csv shards/* || status=$?
[ "$status" -eq 3 ] || fail "the merge ends with $status"
same_as_single csv

say "Slurm: a task requeued and killed in the middle"
enter slurm-disturbed
hold
job=$(submit 1-$shards json)
await 120 "task $gated_shard at picture $gate" stands_at_gate
before=$(<"$folder/gate")
rm "$folder/gate"
scontrol requeue "${job}_$gated_shard"
await 60 "the end of the requeued task" gone "$before"
[ "$(shard_lines jsonl $gated_shard)" -eq "$before_gate" ] || fail "requeued: $(shard_lines jsonl $gated_shard) lines"
await 240 "task $gated_shard at picture $gate once more" stands_at_gate
echo "requeued; the program went on behind picture $before_gate of its shard"
kill -s KILL "$(<"$folder/gate")"
rm "$folder/hold"
await 300 "the array" has_ended "$job"
[[ $(exit_codes "$job") == *" ExitCode=0:9"* ]] || fail "the tasks end with $(exit_codes "$job")"
[ "$(shard_lines jsonl $gated_shard)" -eq "$before_gate" ] || fail "killed: $(shard_lines jsonl $gated_shard) lines"
status=0
"$contrib/merge-shards.sh" -n $pictures results.jsonl shards/* || status=$?
[ "$status" -eq 4 ] || fail "the merge of a killed task's results ends with $status"
[ ! -e results.jsonl ] || fail "results of a killed task were merged"
job=$(submit $gated_shard json)
await 120 "the task alone" has_ended "$job"
status=0
"$contrib/merge-shards.sh" -n $pictures results.jsonl shards/* || status=$?
[ "$status" -eq 3 ] || fail "the merge ends with $status"
same_as_single jsonl

# --- GNU parallel over ssh
start_sshd()
{
    local ssh=$folder/ssh port
    port=$(free_port)
    mkdir "$ssh"
    chmod 700 "$ssh"
    ssh-keygen -q -t ed25519 -N '' -f "$ssh/host_key"
    ssh-keygen -q -t ed25519 -N '' -f "$ssh/user_key"
    cp "$ssh/user_key.pub" "$ssh/authorized_keys"
    cat >"$ssh/sshd_config" <<END
Port $port
ListenAddress 127.0.0.1
HostKey $ssh/host_key
PidFile none
AuthorizedKeysFile $ssh/authorized_keys
PermitRootLogin prohibit-password
PasswordAuthentication no
StrictModes no
UsePAM no
END
    {
        printf "scale "
        cat "$ssh/host_key.pub"
    } >"$ssh/known_hosts"
    cat >"$ssh/config" <<END
Host machine-one machine-two
    Port $port
Host machine-down
    Port $(free_port)
Host *
    HostName 127.0.0.1
    User root
    IdentityFile $ssh/user_key
    IdentitiesOnly yes
    BatchMode yes
    UserKnownHostsFile $ssh/known_hosts
    GlobalKnownHostsFile /dev/null
    HostKeyAlias scale
    StrictHostKeyChecking yes
END
    if [ ! -d /run/sshd ]; then
        mkdir -m 755 /run/sshd
        made_for_sshd=1
    fi
    start sshd /usr/sbin/sshd -D -e -f "$ssh/sshd_config"
    export PARALLEL_SSH="ssh -F $ssh/config" PARALLEL_HOME=$folder/parallel
    await 20 sshd sshd_answers
}
sshd_answers()
{
    ssh -F "$folder/ssh/config" machine-one true 2>>"$folder/ssh.log"
}
# over_ssh STATUS HOSTS FORMAT: must end with this status.
over_ssh()
{
    local status=0
    "$contrib/parallel-ssh.sh" -f "$3" "$2" $shards list shards "${options[@]}" 2>messages || status=$?
    cat messages
    [ "$status" -eq "$1" ] || fail "parallel-ssh.sh ends with $status"
}

say "ssh: $shards shards on two machines"
start_sshd
parallel --version | sed -n 1p
enter ssh
printf '%s\n' machine-one machine-two >hosts
over_ssh 3 hosts csv
same_as_single csv shards/results.csv
[ "$(tail -n +2 shards/parallel.log | cut -f 2 | sort -u | wc -l)" -eq 2 ] || fail "not on two machines"

say "ssh: one machine down, a shard killed, all stopped in the middle"
enter ssh-disturbed
printf '%s\n' machine-one machine-down machine-two >hosts
hold
"$contrib/parallel-ssh.sh" hosts $shards list shards "${options[@]}" 2>messages &
driver=$!
await 120 "shard $gated_shard at picture $gate" stands_at_gate
before=$(<"$folder/gate")
rm "$folder/gate"
kill -s KILL "$before"
await 60 "the shard on another machine" stands_at_gate
echo "killed; the program went on behind picture $before_gate of its shard"
before=$(<"$folder/gate")
kill -s TERM $driver
status=0
wait $driver || status=$?
[ "$status" -eq 143 ] || fail "stopped: parallel-ssh.sh ends with $status: $(<messages)"
await 60 "the end of the program on the other machine" gone "$before"
[ ! -e shards/results.jsonl ] || fail "results before the end"
rm "$folder/hold"
over_ssh 3 hosts json
same_as_single jsonl shards/results.jsonl
printf '%s\n' machine-down >hosts
over_ssh 4 hosts json
echo "no machine: exit code 4"
