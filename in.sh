exec unshare -m --propagation private bash -c 'mount --bind /tmp/xmlfork /src && cd /src && exec bash -c "$0"' "$*"
