// Typed arrays that grow, for what there are millions of.

/** Numbers that are added one by one and never taken away. */
class GrowingArray {
  /** @param {(length: number) => any} create makes an array of zeros */
  constructor(create) {
    this.create = create;
    this.values = create(1024);
    this.length = 0;
  }

  /** @param {number} value */
  push(value) {
    if (this.length === this.values.length) {
      const larger = this.create(2 * this.length);
      larger.set(this.values);
      this.values = larger;
    }
    this.values[this.length++] = value;
  }
}

export class GrowingUint8 extends GrowingArray {
  constructor() {
    super((length) => new Uint8Array(length));
  }
}

export class GrowingUint32 extends GrowingArray {
  constructor() {
    super((length) => new Uint32Array(length));
  }
}

export class GrowingInt32 extends GrowingArray {
  constructor() {
    super((length) => new Int32Array(length));
  }
}

export class GrowingFloat32 extends GrowingArray {
  constructor() {
    super((length) => new Float32Array(length));
  }
}
