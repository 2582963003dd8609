# Sourced: check_listed LISTING LIBDIR fails naming every expected path that
# LISTING (one path per line, relative to the prefix) lacks.
check_listed() {
  local listing=$1 libdir=$2 missing=0 path
  while IFS= read -r path; do
    [[ -z $path || $path == \#* ]] && continue
    path=${path/LIBDIR/$libdir}
    if ! grep -qxF -- "$path" "$listing"; then
      echo "missing: $path" >&2
      missing=1
    fi
  done <"$(dirname "${BASH_SOURCE[0]}")/expected_files.txt"
  return $missing
}
