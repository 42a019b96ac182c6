# shellcheck shell=bash
file=$1
rm $file
