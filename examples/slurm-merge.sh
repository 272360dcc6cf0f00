#!/bin/sh
#SBATCH --job-name=quorl-js-merge
# The job that slurm-submit.sh has wait for the array: joins the shards, and makes an index of them.
#
#   sbatch slurm-merge.sh LIST SHARDS RECORDS INDEX
#
# LIST, SHARDS    as for slurm-run.sh
# RECORDS, INDEX  files to write
set -eu
list=$1
shards=$2
records=$3
index=$4

# Exit status 1 means that some files could not be read.
quorl-js merge --files-from "$list" --output "$records" "$shards"/*.ndjson || [ $? -eq 1 ]
quorl-js index "$index" --from-ndjson "$records" || [ $? -eq 1 ]
