# docker build -t trellion . && docker run --rm --init -u "$(id -u)" -v "$PWD:/figures" trellion FILE.eps ...
FROM debian:12-slim AS build
RUN apt-get update && apt-get install -y --no-install-recommends \
      g++ cmake make pkg-config libcli11-dev libtiff-dev libqpdf-dev dpkg-dev file
COPY . /trellion
RUN cd /trellion && cmake --preset release && cmake --build --preset release -j && \
    cpack --config build/release/CPackConfig.cmake && mv build/trellion_*.deb /trellion.deb
FROM debian:12-slim
COPY --from=build /trellion.deb /
RUN apt-get update && apt-get install -y --no-install-recommends /trellion.deb ghostscript poppler-utils
WORKDIR /figures
ENTRYPOINT ["trellion-batch"]
