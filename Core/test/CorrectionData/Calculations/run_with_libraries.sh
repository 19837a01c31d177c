#!/bin/sh
# run_with_libraries.sh FOLDERS PROGRAM ARGUMENTS…: runs a program with the LAPACK and BLAS of the folders (separated by
# colons); 77 when they are not installed, 1 when the program would take others all the same.
folders=$1
shift
for folder in $(echo "$folders" | tr : ' '); do
    [ -d "$folder" ] || exit 77
done
export LD_LIBRARY_PATH="$folders"
taken=$(ldd "$1" | grep -c -E "lib(lapack|blas)\.so\.3 => ($(echo "$folders" | tr : '|'))/")
if [ "$taken" -ne 2 ]; then
    echo "LAPACK and BLAS do not come from $folders"
    exit 1
fi
exec "$@"
