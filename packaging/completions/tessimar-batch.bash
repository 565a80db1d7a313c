# Completion of tessimar-batch for bash.
_tessimar_batch() {
  local word="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  # "--pictures=DIR" arrives as three words.
  if [ "$previous" = = ]; then
    previous="${COMP_WORDS[COMP_CWORD - 2]}"
  elif [ "$word" = = ]; then
    word=
  fi
  case "$previous" in
    --pictures | --rankings | --runs | --plugins)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
    -e | --seed)
      return
      ;;
    --variables | --segments | --check-plugin) ;;
    *)
      if [[ "$word" == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "-e --pictures --variables --rankings --runs --segments --seed --plugins \
          --check-plugin --verbose -h --help --version" -- "$word")
        return
      fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -o filenames -F _tessimar_batch tessimar-batch
