class Account extends Base {
  #balance = 0;
  static count = 0;
  owner = "nobody";
  static #limit = 500;

  constructor(owner) {
    super(owner);
    this.#balance = 10;
    Account.count++;
  }

  get balance() {
    return this.#balance;
  }

  set balance(value) {
    this.#check(value);
    this.#balance = value;
  }

  static async open(owner) {
    return new Account(owner);
  }

  async *history() {
    yield* this.entries;
  }

  #check(value) {
    if (value < 0) throw new RangeError("negative");
  }

  [Symbol.iterator]() {
    return this.history();
  }
}
