#!/bin/sh
# sign_copies.sh PROGRAM BARE_PROGRAM OUT_DIR
# Copies of PROGRAM in OUT_DIR: trusted.exe, signed by a certificate that the test root
# (root.cer) issued; untrusted.exe, signed by a self-signed certificate that nobody trusts;
# sha256.exe, signed by a SHA-256 self-signed certificate, which Wine's Authenticode step alone
# takes for trusted; unsigned.exe as built. BARE_PROGRAM, which has no version resource, signed
# by the trusted chain (bare-trusted.exe) and by the untrusted certificate (bare-untrusted.exe).
set -eu
program=$1
bare=$2
out=$3
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
days=3650
openssl req -x509 -newkey rsa:2048 -nodes -sha1 -days $days -subj "/CN=Tolvane Test Root" \
    -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign" \
    -keyout root.key -out root.pem 2>/dev/null
printf 'basicConstraints=CA:FALSE\nkeyUsage=critical,digitalSignature\nextendedKeyUsage=codeSigning\n' \
    >signer.ext
openssl req -newkey rsa:2048 -nodes -subj "/CN=Hexmoor Signing/O=Hexmoor Ltd" \
    -keyout signer.key -out signer.csr 2>/dev/null
openssl x509 -req -in signer.csr -CA root.pem -CAkey root.key -CAcreateserial -sha1 \
    -days $days -extfile signer.ext -out signer.pem 2>/dev/null
openssl req -x509 -newkey rsa:2048 -nodes -sha1 -days $days -subj "/CN=Nobody Trusts This" \
    -addext "extendedKeyUsage=codeSigning" -keyout stray.key -out stray.pem 2>/dev/null
osslsigncode sign -certs signer.pem -key signer.key -h sha1 -in "$program" -out trusted.exe >/dev/null
osslsigncode sign -certs stray.pem -key stray.key -h sha1 -in "$program" -out untrusted.exe >/dev/null
openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days $days -subj "/CN=Nobody Trusts This Either" \
    -addext "extendedKeyUsage=codeSigning" -keyout stray256.key -out stray256.pem 2>/dev/null
osslsigncode sign -certs stray256.pem -key stray256.key -h sha256 -in "$program" -out sha256.exe \
    >/dev/null
cp "$program" unsigned.exe
osslsigncode sign -certs signer.pem -key signer.key -h sha1 -in "$bare" -out bare-trusted.exe \
    >/dev/null
osslsigncode sign -certs stray.pem -key stray.key -h sha1 -in "$bare" -out bare-untrusted.exe \
    >/dev/null
openssl x509 -in root.pem -outform DER -out root.cer
cp trusted.exe untrusted.exe sha256.exe unsigned.exe bare-trusted.exe bare-untrusted.exe root.cer \
    "$out/"
