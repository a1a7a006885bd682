#!/usr/bin/env bash
# The consumer test: installs the build tree into a scratch prefix, builds the consumer project
# against it with find_package(qrn COMPONENTS import), and has it draw a shared model.
# run.sh BUILD_DIR SOURCE_DIR SCRATCH_DIR MODEL [COMPILER_LAUNCHER]
set -u
build=$1 source=$2 scratch=$3 model=$4 launcher=${5:-}
[ -x "$launcher" ] || launcher=
if [ ! -f "$model" ]; then
  echo "consumer: SKIPPED: the shared model $model is not there (../shared/models missing?)"
  exit 77
fi
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" > "$scratch/install.log" ||
  { cat "$scratch/install.log"; echo "consumer: install failed"; exit 1; }
cmake -S "$source" -B "$scratch/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_PREFIX_PATH="$scratch/prefix" ${launcher:+-DCMAKE_CXX_COMPILER_LAUNCHER=$launcher} ||
  { echo "consumer: configuring against the installed package failed"; exit 1; }
cmake --build "$scratch/build" || { echo "consumer: build failed"; exit 1; }
out=$("$scratch/build/thumbnail" "$model" "$scratch/thumbnail.png") || { echo "$out"; exit 1; }
echo "$out"
# Some of the picture must be the model.
share=$(sed -n 's/.*, \([0-9]*\)% of it the model/\1/p' <<<"$out")
if [ -z "$share" ] || [ "$share" -lt 5 ] || [ ! -s "$scratch/thumbnail.png" ]; then
  echo "consumer: the picture does not show the model"
  exit 1
fi
rm -rf "$scratch"
