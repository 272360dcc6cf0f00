#!/bin/sh
#SBATCH --job-name=quorl-js
#SBATCH --cpus-per-task=4
# Parses many files in the tasks of a Slurm job array:
#
#   sbatch --array=0-9 slurm-run.sh 10 LIST SHARDS
#   quorl-js merge --files-from LIST SHARDS/*.ndjson >records.ndjson
#
# 10      number of tasks that share the files; keep it when you rerun some of them
# LIST    file with one path per line, valid on each machine relative to this folder
# SHARDS  folder for the tasks' output
set -eu
tasks=$1
list=$2
shards=$3

mkdir -p "$shards"
shard=$shards/$SLURM_ARRAY_TASK_ID.ndjson
# Status 1 means that some files could not be read; the shard is still complete. A task that is
# killed leaves no shard.
LC_ALL=C awk -v tasks="$tasks" -v task="$SLURM_ARRAY_TASK_ID" 'NR % tasks == task' "$list" |
  quorl-js --format ndjson --jobs "${SLURM_CPUS_PER_TASK:-1}" --files-from - >"$shard.part" ||
  [ $? -eq 1 ]
mv "$shard.part" "$shard"
