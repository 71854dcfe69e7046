#!/bin/sh
# Renders the pictures that the program and the package take as PNG from their SVG sources (needs rsvg-convert).
# Run it after a change of a source and commit both.
set -eu
cd "$(dirname "$0")/../.."

render() { # SOURCE WIDTH TARGET
    mkdir -p "$(dirname "$3")"
    rsvg-convert --keep-aspect-ratio --width "$2" --output "$3" "$1"
}

for source in resources/product_data/*.svg; do
    render "$source" 200 "${source%.svg}.png"
done
render resources/qss/images/Logo_Zenthic.svg 360 resources/qss/images/Logo_Zenthic.png
render resources/qss/images/Logo_Zenthic.svg 720 resources/qss/images/Logo_Zenthic@2x.png
render resources/images/images/KORA_PID.svg 1150 resources/images/images/KORA_PID.png
render resources/images/images/KORA_PID.svg 2300 resources/images/images/KORA_PID@2x.png
for size in 16 22 24 32 48 64 128 256; do
    render packaging/icons/kora-local-ui.svg "$size" "packaging/icons/hicolor/${size}x${size}/apps/kora-local-ui.png"
done
render packaging/icons/kora-local-ui.svg 128 resources/images/images/kora-local-ui.png
