# bash completion of trellion, trellion-batch and trellion-pdf

_trellion() {
  local word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-m0 -s1 -s2 -r -v' -- "$word")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -X '!*.[eE][pP][sS]*' -- "$word"; compgen -d -- "$word")
  fi
}

_trellion_batch() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    -m | -s | -j | --jobs | --time-limit | --memory-limit) return ;;
    --report)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-m -s -r --auto --detour -f --force --keep --verify
      --no-verify -j --jobs --time-limit --memory-limit --report --hairlines -q --quiet
      -h --help --version' -- "$word")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -X '!*.[eE][pP][sS]*' -- "$word"
      compgen -f -X '!*.[pP][dD][fF]' -- "$word"; compgen -d -- "$word")
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
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -X '!*.[pP][dD][fF]' -- "$word"; compgen -d -- "$word")
  fi
}

complete -F _trellion trellion
complete -F _trellion_batch trellion-batch
complete -F _trellion_pdf trellion-pdf
