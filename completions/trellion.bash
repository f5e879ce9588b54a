# bash completion of trellion, trellion-batch, trellion-pdf and trellion-frames

# Folders, and files with one of the extensions; of a figure and its result the figure.
_trellion_files() {
  local word=$1 extensions=$2 file name
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
  while IFS= read -r file; do
    [[ ${file,,} =~ \.($extensions)$ ]] || continue
    name=${file/#~\//"$HOME"/}
    [[ ${name%.*} == *_r && -e ${name%_r.*}.${name##*.} ]] || COMPREPLY+=("$file")
  done < <(compgen -f -- "$word")
}

_trellion() {
  local word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-m0 -s1 -s2 -r -v' -- "$word")
  else
    _trellion_files "$word" 'eps|epsf|epsi|ps'
  fi
}

_trellion_batch() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    -m | -s | -j | --jobs | --time-limit | --memory-limit) return ;;
    --report | --files-from)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    --output-dir)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-m -s -r --auto --detour -f --force --keep --verify
      --no-verify -j --jobs --time-limit --memory-limit --report --hairlines
      --output-dir --files-from -n --dry-run -q --quiet
      -h --help --version' -- "$word")
  else
    _trellion_files "$word" 'eps|epsf|epsi|ps|pdf'
  fi
}

_trellion_pdf() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    --precision) return ;;
  esac
  if [[ $word == -* && $previous != -o ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-o --close --no-reorder --precision --strict -f --force
      -h --help --version' -- "$word")
  else
    _trellion_files "$word" pdf
  fi
}

_trellion_frames() {
  local word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--help --version -s1 -s2' -- "$word")
  elif [ "$COMP_CWORD" -eq 1 ]; then
    _trellion_files "$word" 'eps|epsf|epsi|ps'
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}

complete -F _trellion trellion
complete -F _trellion_batch trellion-batch
complete -F _trellion_pdf trellion-pdf
complete -F _trellion_frames trellion-frames
